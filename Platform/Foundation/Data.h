#pragma once

#include "Platform/Foundation/ByteBuffer.h"
#include "Platform/Foundation/Object.h"

#include <cstddef>
#include <span>
#include <string_view>
#include <utility>
#include <vector>

namespace NS {

using Bytes = std::span<const std::byte>;

// The bytes of a text, in place.
inline Bytes bytesOf(std::string_view text) noexcept {
    return std::as_bytes(std::span(text));
}
// Bytes as characters, in place.
inline std::string_view charactersOf(Bytes bytes) noexcept {
    return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

// A run of bytes that never changes. Any thread.
class Data : public Object {
    NS_OBJECT(Data)
  public:
    static Ref<Data> dataWithBytes(Bytes bytes);
    // Bytes that stay where they are; `owner` keeps them there and is kept by the result.
    static Ref<Data> dataWithBytesNoCopy(Bytes bytes, Ref<Object> owner);
    // Takes the bytes over without copying them.
    static Ref<Data> dataWithVector(std::vector<std::byte> bytes);
    static Ref<Data> dataWithBuffer(ByteBuffer bytes);

    // Another object with the bytes as they are now, which it shares where it can.
    Ref<Data> twin() const;

    Bytes bytes() const noexcept { return bytes_; }
    std::size_t length() const noexcept { return bytes_.size(); }

    bool isEqual(const Object* other) const override;
    std::size_t hash() const override;
    // "{length = 5, bytes = 0x68656c6c6f}"; of more than 24 bytes the first 16 and the last 8, in
    // words: "{length = 25, bytes = 0x00010203 04050607 08090a0b 0c0d0e0f ... 11121314 15161718 }".
    Ref<String> description() const override;
    void encodeWithCoder(KeyedArchiver& coder) const override;

  protected:
    Data(Bytes bytes, RefPtr<Object> owner) : bytes_(bytes), owner_(std::move(owner)) {}
    const RefPtr<Object>& owner() const noexcept { return owner_; }
    void setBytes(Bytes bytes, RefPtr<Object> owner) noexcept {
        bytes_ = bytes;
        owner_ = std::move(owner);
    }

  private:
    Bytes bytes_;
    RefPtr<Object> owner_; // nil when the bytes are the object's own
};

// Bytes that can be appended to and replaced. Not for use by two threads at once while one changes
// it.
class MutableData final : public Data {
    NS_OBJECT(MutableData)
  public:
    explicit MutableData(Bytes bytes = {});
    // The same bytes, which are copied where one of the two changes.
    explicit MutableData(const Data& data);
    // The bytes may be some of its own.
    void appendBytes(Bytes bytes);
    void setData(Bytes bytes);

  private:
    std::vector<std::byte> storage_; // empty while the bytes are another's
};

} // namespace NS
