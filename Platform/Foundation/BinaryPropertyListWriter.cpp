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
constexpr std::size_t kTapeReference = sizeof(BinaryPropertyListWriter::Reference);

// An integer's size is a power of two; its marker names the exponent.
unsigned sizeExponent(std::uint64_t value) noexcept {
    return static_cast<unsigned>(std::bit_width(BigEndian::widthOf(value) - 1));
}

// The fewest bytes for the number that are also those of an integer of a machine.
unsigned machineWidthOf(std::uint64_t value) noexcept {
    return std::bit_ceil(BigEndian::widthOf(value));
}

std::byte* putInteger(std::byte* out, std::uint64_t value) noexcept {
    const unsigned exponent = sizeExponent(value);
    *out = static_cast<std::byte>(0x10U | exponent);
    BigEndian::store(out + 1, value, 1U << exponent);
    return out + 1 + (1U << exponent);
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

} // namespace

// Begins an object and gives room for its bytes on the tape.
std::byte* BinaryPropertyListWriter::begin(std::size_t size) {
    const std::size_t offset = tape_.size();
    if (size > std::numeric_limits<std::uint32_t>::max() - offset) {
        Exception::raise(kInvalidArchiveOperationException,
                         "a property list grew longer than 4 GiB");
    }
    offsets_.push_back(static_cast<std::uint32_t>(offset));
    tape_.resize(offset + size);
    return tape_.data() + offset;
}

std::byte* BinaryPropertyListWriter::beginCounted(unsigned kind, std::uint64_t count,
                                                  std::size_t bodySize) {
    if (count < 0xF) {
        std::byte* const out = begin(1 + bodySize);
        *out = static_cast<std::byte>(kind << 4U | count);
        return out + 1;
    }
    std::byte* const out = begin(1 + integerSize(count) + bodySize);
    *out = static_cast<std::byte>(kind << 4U | 0xFU);
    return putInteger(out + 1, count);
}

BinaryPropertyListWriter::Reference BinaryPropertyListWriter::addBool(bool value) {
    *begin(1) = value ? std::byte{0x09} : std::byte{0x08};
    return lastAdded();
}

BinaryPropertyListWriter::Reference BinaryPropertyListWriter::addInteger(std::int64_t value) {
    const auto bits = static_cast<std::uint64_t>(value);
    putInteger(begin(integerSize(bits)), bits);
    return lastAdded();
}

BinaryPropertyListWriter::Reference BinaryPropertyListWriter::addUnsigned(std::uint64_t value) {
    if (value <= std::uint64_t{std::numeric_limits<std::int64_t>::max()}) {
        return addInteger(static_cast<std::int64_t>(value));
    }
    // Eight bytes would read as a negative number.
    std::byte* const out = begin(17);
    *out = std::byte{0x14};
    BigEndian::store(out + 9, value, 8);
    return lastAdded();
}

BinaryPropertyListWriter::Reference BinaryPropertyListWriter::addFloat(float value) {
    std::byte* const out = begin(5);
    *out = std::byte{0x22};
    BigEndian::store(out + 1, std::bit_cast<std::uint32_t>(value), 4);
    return lastAdded();
}

BinaryPropertyListWriter::Reference BinaryPropertyListWriter::addEightBytes(unsigned marker,
                                                                            std::uint64_t bits) {
    std::byte* const out = begin(9);
    *out = static_cast<std::byte>(marker);
    BigEndian::store(out + 1, bits, 8);
    return lastAdded();
}

BinaryPropertyListWriter::Reference BinaryPropertyListWriter::addReal(double value) {
    return addEightBytes(0x23, std::bit_cast<std::uint64_t>(value));
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

BinaryPropertyListWriter::Reference BinaryPropertyListWriter::addDate(double seconds) {
    return addEightBytes(0x33, std::bit_cast<std::uint64_t>(seconds));
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

BinaryPropertyListWriter::Reference BinaryPropertyListWriter::addUid(std::uint64_t value) {
    const unsigned width = machineWidthOf(value);
    std::byte* const out = begin(1 + width);
    *out = static_cast<std::byte>(0x80U | (width - 1));
    BigEndian::store(out + 1, value, width);
    return lastAdded();
}

BinaryPropertyListWriter::Reference
BinaryPropertyListWriter::addArray(std::span<const Reference> elements) {
    putRaw(beginCounted(0xA, elements.size(), elements.size_bytes()), elements);
    collections_.push_back({lastAdded(), static_cast<std::uint32_t>(elements.size())});
    referenceCount_ += elements.size();
    return lastAdded();
}

BinaryPropertyListWriter::Reference
BinaryPropertyListWriter::addDictionary(std::span<const Reference> keys,
                                        std::span<const Reference> values) {
    std::byte* const out = beginCounted(0xD, keys.size(), keys.size_bytes() + values.size_bytes());
    putRaw(putRaw(out, keys), values);
    const std::size_t count = keys.size() + values.size();
    collections_.push_back({lastAdded(), static_cast<std::uint32_t>(count)});
    referenceCount_ += count;
    return lastAdded();
}

std::uint64_t BinaryPropertyListWriter::endOf(Reference object) const noexcept {
    return object + std::size_t{1} < offsets_.size() ? offsets_[object + 1] : tape_.size();
}

// Readers want the widths to hold the number of objects and the offset table's own offset, not
// merely the largest reference and the last object's offset.
BinaryPropertyListWriter::Layout BinaryPropertyListWriter::layout() const {
    Layout layout{};
    layout.referenceWidth = machineWidthOf(offsets_.size());
    layout.tableOffset = kMagic.size() + tape_.size() - referenceCount_ * kTapeReference +
                         referenceCount_ * layout.referenceWidth;
    layout.offsetWidth = machineWidthOf(layout.tableOffset);
    return layout;
}

std::vector<std::byte> BinaryPropertyListWriter::finish(Reference top) const {
    const Layout list = layout();
    const std::size_t trailer = list.tableOffset + offsets_.size() * list.offsetWidth;
    std::vector<std::byte> bytes(trailer + kTrailerSize);
    putRaw(bytes.data(), std::span(kMagic));
    emitObjects(list, bytes.data() + kMagic.size());
    emitOffsets(list, bytes.data() + list.tableOffset);
    emitTrailer(list, top, bytes.data() + trailer);
    return bytes;
}

// The trailer follows whatever is emitted ahead of it.
static_assert(kTrailerSize >= sizeof(std::uint64_t));

// Copies the tape, giving the collections' references their final width on the way.
void BinaryPropertyListWriter::emitObjects(const Layout& layout, std::byte* out) const {
    std::size_t copied = 0;
    for (const Collection& collection : collections_) {
        const std::size_t end = endOf(collection.object);
        const std::size_t references = end - collection.referenceCount * kTapeReference;
        out = putRaw(out, std::span(tape_).subspan(copied, references - copied));
        for (std::size_t at = references; at < end; at += kTapeReference) {
            Reference reference;
            std::memcpy(&reference, tape_.data() + at, kTapeReference);
            BigEndian::storeAhead(out, reference, layout.referenceWidth);
            out += layout.referenceWidth;
        }
        copied = end;
    }
    putRaw(out, std::span(tape_).subspan(copied));
}

void BinaryPropertyListWriter::emitOffsets(const Layout& layout, std::byte* out) const {
    std::uint64_t moved = kMagic.size(); // how far the list is ahead of the tape, modulo 2^64
    std::size_t object = 0;
    const auto emitUpTo = [&](std::size_t end) {
        for (; object < end; ++object) {
            BigEndian::storeAhead(out, offsets_[object] + moved, layout.offsetWidth);
            out += layout.offsetWidth;
        }
    };
    for (const Collection& collection : collections_) {
        emitUpTo(collection.object + std::size_t{1});
        moved += std::uint64_t{collection.referenceCount} * layout.referenceWidth -
                 std::uint64_t{collection.referenceCount} * kTapeReference;
    }
    emitUpTo(offsets_.size());
}

void BinaryPropertyListWriter::emitTrailer(const Layout& layout, Reference top,
                                           std::byte* out) const {
    out[6] = static_cast<std::byte>(layout.offsetWidth);
    out[7] = static_cast<std::byte>(layout.referenceWidth);
    BigEndian::store(out + 8, offsets_.size(), 8);
    BigEndian::store(out + 16, top, 8);
    BigEndian::store(out + 24, layout.tableOffset, 8);
}

} // namespace NS
