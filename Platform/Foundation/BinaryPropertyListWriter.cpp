#include "Platform/Foundation/BinaryPropertyListWriter.h"

#include "Platform/Foundation/BigEndian.h"
#include "Platform/Foundation/Exception.h"
#include "Platform/Foundation/Number.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <limits>

namespace NS {

namespace {

constexpr std::string_view kMagic = "bplist00";
constexpr std::size_t kTrailerSize = 32;
constexpr unsigned kArray = 0xA;
constexpr unsigned kDictionary = 0xD;
// For how many objects' offsets places are made at once.
constexpr std::size_t kPlaces = 256;

// An integer's size is a power of two; its marker names the exponent.
constexpr unsigned sizeExponent(std::uint64_t value) noexcept {
    return static_cast<unsigned>(std::bit_width(BigEndian::widthOf(value) - 1));
}

constexpr std::uint64_t largestOf(unsigned width) noexcept {
    return std::numeric_limits<std::uint64_t>::max() >> (64U - 8U * width);
}

std::byte* putNumber(std::byte* out, unsigned marker, std::uint64_t bits, unsigned width) noexcept {
    *out = static_cast<std::byte>(marker);
    BigEndian::storeAhead(out + 1, bits, width);
    return out + 1 + width;
}

std::byte* putInteger(std::byte* out, std::uint64_t value) noexcept {
    const unsigned exponent = sizeExponent(value);
    return putNumber(out, 0x10U | exponent, value, 1U << exponent);
}

std::size_t integerSize(std::uint64_t value) noexcept {
    return 1 + (std::size_t{1} << sizeExponent(value));
}

template <class T>
std::byte* putRaw(std::byte* out, std::span<const T> elements) noexcept {
    if (!elements.empty()) {
        std::memcpy(out, elements.data(), elements.size_bytes());
    }
    return out + elements.size_bytes();
}

// How many bytes of an object stand ahead of what its marker counts.
std::size_t headSize(const std::byte* object) noexcept {
    if ((object[0] & std::byte{0xF}) != std::byte{0xF}) {
        return 1;
    }
    return 2 + (std::size_t{1} << std::to_integer<unsigned>(object[1] & std::byte{0xF}));
}

// Two numbers as one of twice the width.
template <unsigned width>
std::uint64_t joined(const std::uint32_t* numbers) noexcept {
    return std::uint64_t{numbers[0]} << 8 * width | numbers[1];
}

// Four at a time, which is twice as fast.
template <unsigned width>
std::byte* putNumbers(std::byte* out, std::span<const std::uint32_t> numbers) noexcept {
    const std::uint32_t* next = numbers.data();
    const std::uint32_t* const end = next + numbers.size();
    for (; end - next >= 4; next += 4, out += 4 * width) {
        BigEndian::storeAhead(out, joined<width>(next), 2 * width);
        BigEndian::storeAhead(out + 2 * width, joined<width>(next + 2), 2 * width);
    }
    if (end - next >= 2) {
        BigEndian::storeAhead(out, joined<width>(next), 2 * width);
        next += 2;
        out += 2 * width;
    }
    if (next != end) {
        BigEndian::storeAhead(out, *next, width);
        out += width;
    }
    return out;
}

// Numbers one behind the other, in 1, 2 or 4 bytes each.
std::byte* putNumbers(std::byte* out, std::span<const std::uint32_t> numbers,
                      unsigned width) noexcept {
    switch (width) {
    case 1:
        return putNumbers<1>(out, numbers);
    case 2:
        return putNumbers<2>(out, numbers);
    default:
        return putNumbers<4>(out, numbers);
    }
}

} // namespace

BinaryPropertyListWriter::BinaryPropertyListWriter() {
    reset();
}

void BinaryPropertyListWriter::reset(std::size_t expectedLength) {
    bytes_.clear();
    (void)bytes_.room(expectedLength);
    offsets_.clear();
    count_ = 0;
    prepared_ = 0;
    referenceWidth_ = 1;
    putRaw(bytes_.room(kMagic.size()), std::span(kMagic));
    bytes_.extend(kMagic.size());
}

void BinaryPropertyListWriter::raiseTooLong() {
    Exception::raise(kInvalidArchiveOperationException, "a property list grew longer than 4 GiB");
}

// With the count in an integer of more than a byte.
std::byte* BinaryPropertyListWriter::beginLong(unsigned kind, std::uint64_t count,
                                               std::size_t bodySize) {
    std::byte* const out = begin(1 + integerSize(count) + bodySize);
    *out = static_cast<std::byte>(kind << 4U | 0xFU);
    return putInteger(out + 1, count);
}

BinaryPropertyListWriter::Reference BinaryPropertyListWriter::addBool(bool value) {
    *begin(1) = value ? std::byte{0x09} : std::byte{0x08};
    return lastAdded();
}

BinaryPropertyListWriter::Reference BinaryPropertyListWriter::addUnsigned(std::uint64_t value) {
    if (value <= std::uint64_t{std::numeric_limits<std::int64_t>::max()}) {
        return addInteger(static_cast<std::int64_t>(value));
    }
    // Eight bytes would read as a negative number.
    std::byte* const out = begin(17);
    putNumber(out, 0x14, 0, 8);
    BigEndian::storeAhead(out + 9, value, 8);
    return lastAdded();
}

BinaryPropertyListWriter::Reference BinaryPropertyListWriter::addLongUid(std::uint64_t value) {
    const unsigned width = machineWidthOf(value);
    return addNumber(0x80U | (width - 1), value, width);
}

BinaryPropertyListWriter::Reference BinaryPropertyListWriter::addFloat(float value) {
    return addNumber(0x22, std::bit_cast<std::uint32_t>(value), 4);
}

BinaryPropertyListWriter::Reference BinaryPropertyListWriter::addNumber(const Number& number) {
    switch (number.type()) {
    case Number::Type::kBoolean:
        return addBool(number.boolValue());
    case Number::Type::kUnsigned:
        return addUnsigned(number.unsignedLongLongValue());
    case Number::Type::kFloat:
        return addFloat(static_cast<float>(number.doubleValue()));
    case Number::Type::kDouble:
        return addReal(number.doubleValue());
    default:
        return addInteger(number.longLongValue());
    }
}

BinaryPropertyListWriter::Reference BinaryPropertyListWriter::addData(Bytes bytes) {
    putRaw(beginCounted(0x4, bytes.size(), bytes.size()), bytes);
    return lastAdded();
}

BinaryPropertyListWriter::Reference BinaryPropertyListWriter::addAscii(std::string_view text) {
    putRaw(beginCounted(0x5, text.size(), text.size()), std::span(text));
    return lastAdded();
}

BinaryPropertyListWriter::Reference BinaryPropertyListWriter::addString(const String& text) {
    if (text.isAscii()) {
        return addAscii(text.ascii());
    }
    const std::u16string_view units = text.utf16();
    std::byte* out = beginCounted(0x6, units.size(), units.size() * 2);
    for (const char16_t unit : units) {
        BigEndian::store(out, unit, 2);
        out += 2;
    }
    return lastAdded();
}

// Widens before the references are counted in bytes.
std::byte* BinaryPropertyListWriter::beginCollection(unsigned kind, std::uint64_t count,
                                                     std::size_t references) {
    if (count_ == prepared_) [[unlikely]] {
        prepareMore();
    }
    return beginCounted(kind, count, references * referenceWidth_);
}

std::byte*
BinaryPropertyListWriter::putReferences(std::byte* out,
                                        std::span<const Reference> references) const noexcept {
    return putNumbers(out, references, referenceWidth_);
}

BinaryPropertyListWriter::Reference
BinaryPropertyListWriter::addArray(std::span<const Reference> elements) {
    putReferences(beginCollection(kArray, elements.size(), elements.size()), elements);
    return lastAdded();
}

BinaryPropertyListWriter::Reference
BinaryPropertyListWriter::addDictionary(std::span<const Reference> keys,
                                        std::span<const Reference> values) {
    std::byte* const out = beginCollection(kDictionary, keys.size(), keys.size() + values.size());
    putReferences(putReferences(out, keys), values);
    return lastAdded();
}

// Makes places for the offsets of some objects more, with references that reach them.
void BinaryPropertyListWriter::prepareMore() {
    if (count_ == largestOf(referenceWidth_)) {
        widen();
    }
    if (count_ == offsets_.size()) {
        (void)offsets_.room(kPlaces);
        offsets_.extend(kPlaces);
    }
    prepared_ = static_cast<Reference>(
        std::min<std::uint64_t>(offsets_.size(), largestOf(referenceWidth_)));
}

// Writes all that was added anew, with the next width of references. It happens twice at most, for
// the 256th object and the 65,536th.
void BinaryPropertyListWriter::widen() {
    const unsigned width = referenceWidth_ * 2;
    ByteBuffer before;
    putRaw(before.room(bytes_.size() + kAhead), Bytes(bytes_)); // numbers are read in eight bytes
    before.extend(bytes_.size());
    bytes_.clear();
    bytes_.extend(kMagic.size());
    for (std::size_t object = 0; object < count_; ++object) {
        const std::size_t begin = offsets_[object];
        const std::size_t end = object + 1 < count_ ? offsets_[object + 1] : before.size();
        offsets_[object] = static_cast<std::uint32_t>(bytes_.size());
        widenObject(Bytes(before).subspan(begin, end - begin), width);
        if (bytes_.size() > kLongest) {
            raiseTooLong();
        }
    }
    referenceWidth_ = width;
}

void BinaryPropertyListWriter::widenObject(Bytes object, unsigned width) {
    const auto kind = std::to_integer<unsigned>(object[0] >> 4);
    const bool isCollection = kind == kArray || kind == kDictionary;
    const std::size_t head = isCollection ? headSize(object.data()) : object.size();
    const std::size_t count = (object.size() - head) / referenceWidth_;
    std::byte* out = bytes_.room(head + count * width + kAhead);
    out = putRaw(out, object.first(head));
    for (std::size_t i = 0; i < count; ++i) {
        const std::byte* const reference = object.data() + head + i * referenceWidth_;
        BigEndian::storeAhead(out, BigEndian::load(reference, referenceWidth_), width);
        out += width;
    }
    bytes_.extend(head + count * width);
}

// Readers want the widths to hold the number of objects and the offset table's own offset, not
// merely the largest reference and the last object's offset.
Bytes BinaryPropertyListWriter::finishInPlace(Reference top) {
    static_assert(kTrailerSize >= kAhead); // the trailer follows whatever is written ahead of it
    const std::size_t table = bytes_.size();
    const unsigned width = machineWidthOf(table);
    const std::size_t size = count_ * std::size_t{width} + kTrailerSize;
    std::byte* const out = bytes_.room(size);
    putTrailer(putNumbers(out, std::span(offsets_).first(count_), width), width, top, table);
    bytes_.extend(size);
    return bytes_;
}

ByteBuffer BinaryPropertyListWriter::finish(Reference top) {
    (void)finishInPlace(top);
    return takeBytes();
}

void BinaryPropertyListWriter::putTrailer(std::byte* out, unsigned offsetWidth, Reference top,
                                          std::uint64_t table) const noexcept {
    std::memset(out, 0, kTrailerSize);
    out[6] = static_cast<std::byte>(offsetWidth);
    out[7] = static_cast<std::byte>(referenceWidth_);
    BigEndian::store(out + 8, count_, 8);
    BigEndian::store(out + 16, top, 8);
    BigEndian::store(out + 24, table, 8);
}

} // namespace NS
