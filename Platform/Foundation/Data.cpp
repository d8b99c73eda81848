#include "Platform/Foundation/Data.h"

#include "Platform/Foundation/Hashing.h"
#include "Platform/Foundation/StringBuilder.h"

#include <algorithm>
#include <functional>
#include <new>
#include <string>
#include <utility>

namespace NS {

constinit const Class Data::kClass{.name = "NSData", .superclass = &Object::kClass};
constinit const Class MutableData::kClass{.name = "NSMutableData", .superclass = &Data::kClass};

namespace {

// A vector or buffer that data stand in.
template <class Container>
class Owner final : public Object {
  public:
    explicit Owner(Container bytes) : bytes_(std::move(bytes)) {}
    Bytes bytes() const noexcept { return bytes_; }

  private:
    Container bytes_;
};

void appendHex(StringBuilder& builder, Bytes bytes) {
    constexpr std::string_view kDigits = "0123456789abcdef";
    for (const std::byte byte : bytes) {
        builder.append(kDigits[std::to_integer<std::size_t>(byte >> 4)]);
        builder.append(kDigits[std::to_integer<std::size_t>(byte & std::byte{0xF})]);
    }
}

bool isWithin(Bytes part, Bytes whole) noexcept {
    return !std::less<>{}(part.data(), whole.data()) &&
           std::less<>{}(part.data(), whole.data() + whole.size());
}

// Words of four bytes with a blank after each.
void appendHexWords(StringBuilder& builder, Bytes bytes) {
    constexpr std::size_t kWord = 4;
    for (; !bytes.empty(); bytes = bytes.subspan(kWord)) {
        appendHex(builder, bytes.first(kWord));
        builder.append(' ');
    }
}

} // namespace

Ref<Data> Data::dataWithBytes(Bytes bytes) {
    void* const storage = Object::operator new(sizeof(Data) + bytes.size());
    auto* const target = static_cast<std::byte*>(storage) + sizeof(Data);
    std::copy_n(bytes.data(), bytes.size(), target);
    return Ref<Data>(*::new (storage) Data(Bytes(target, bytes.size()), nullptr), kAdopt);
}

Ref<Data> Data::dataWithBytesNoCopy(Bytes bytes, Ref<Object> owner) {
    void* const storage = Object::operator new(sizeof(Data));
    return Ref<Data>(*::new (storage) Data(bytes, std::move(owner)), kAdopt);
}

Ref<Data> Data::dataWithVector(std::vector<std::byte> bytes) {
    const auto owner = make<Owner<std::vector<std::byte>>>(std::move(bytes));
    return dataWithBytesNoCopy(owner->bytes(), owner);
}

Ref<Data> Data::dataWithBuffer(ByteBuffer bytes) {
    const auto owner = make<Owner<ByteBuffer>>(std::move(bytes));
    return dataWithBytesNoCopy(owner->bytes(), owner);
}

Ref<Data> Data::twin() const {
    if (owner_) {
        return dataWithBytesNoCopy(bytes_, Ref<Object>(*owner_));
    }
    return isKindOfClass(MutableData::kClass)
               ? dataWithBytes(bytes_)
               : dataWithBytesNoCopy(bytes_, Ref<Object>(const_cast<Data&>(*this)));
}

bool Data::isEqual(const Object* other) const {
    const auto* data = as<Data>(other);
    return data != nullptr && std::ranges::equal(bytes(), data->bytes());
}

std::size_t Data::hash() const {
    return hashOfBytes(charactersOf(bytes_));
}

Ref<String> Data::description() const {
    constexpr std::size_t kHead = 16;
    constexpr std::size_t kTail = 8;
    StringBuilder builder;
    builder.appendAscii("{length = " + std::to_string(length()) + ", bytes = 0x");
    if (length() <= kHead + kTail) {
        appendHex(builder, bytes_);
    } else {
        appendHexWords(builder, bytes_.first(kHead));
        builder.appendAscii("... ");
        appendHexWords(builder, bytes_.last(kTail));
    }
    builder.append('}');
    return builder.string();
}

MutableData::MutableData(Bytes bytes) : Data({}, nullptr) {
    setData(bytes);
}

MutableData::MutableData(const Data& data) : Data({}, nullptr) {
    const Ref<Data> twin = data.twin();
    setBytes(twin->bytes(), twin);
}

void MutableData::appendBytes(Bytes bytes) {
    const RefPtr<Object> shared = owner(); // which may have these bytes
    if (shared) {
        setData(this->bytes());
    }
    if (isWithin(bytes, storage_)) { // they move when the storage grows
        const std::vector<std::byte> copied(bytes.begin(), bytes.end());
        storage_.insert(storage_.end(), copied.begin(), copied.end());
    } else {
        storage_.insert(storage_.end(), bytes.begin(), bytes.end());
    }
    setBytes(storage_, nullptr);
}

void MutableData::setData(Bytes bytes) {
    storage_ = std::vector<std::byte>(bytes.begin(), bytes.end());
    setBytes(storage_, nullptr);
}

} // namespace NS
