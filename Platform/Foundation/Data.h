#pragma once

#include "Platform/Foundation/Object.h"

#include <cstddef>
#include <span>
#include <string>
#include <string_view>
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

    Bytes bytes() const noexcept { return bytes_; }
    std::size_t length() const noexcept { return bytes_.size(); }

    bool isEqual(const Object* other) const override;
    std::size_t hash() const override;
    // "{length = 5, bytes = 0x68656c6c6f}"; more than 24 bytes show their first 16 and last 8.
    Ref<String> description() const override;
    void encodeWithCoder(KeyedArchiver& coder) const override;

  protected:
    Data(Bytes bytes, RefPtr<Object> owner) : bytes_(bytes), owner_(std::move(owner)) {}
    void destroy() const noexcept override;
    void setBytes(Bytes bytes) noexcept { bytes_ = bytes; }

  private:
    Bytes bytes_;
    RefPtr<Object> owner_; // nil when the bytes follow the object in its own allocation
};

// Bytes that can be appended to and replaced. Not for use by two threads at once while one changes
// it.
class MutableData final : public Data {
    NS_OBJECT(MutableData)
  public:
    explicit MutableData(Bytes bytes = {});
    void appendBytes(Bytes bytes);
    void setData(Bytes bytes);

  private:
    void destroy() const noexcept override { delete this; }

    std::vector<std::byte> storage_;
};

} // namespace NS
