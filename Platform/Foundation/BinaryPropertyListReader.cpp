#include "Platform/Foundation/BinaryPropertyListReader.h"

#include "Platform/Foundation/BigEndian.h"
#include "Platform/Foundation/CheckedRange.h"

#include <bit>
#include <string_view>

namespace NS {

namespace {

using Item = BinaryPropertyListReader::Item;
using Kind = BinaryPropertyListReader::Kind;

constexpr std::string_view kMagic = "bplist00";
constexpr std::uint64_t kTrailerSize = 32;

// Where the trailer holds what, from its start.
constexpr std::size_t kOffsetWidthAt = 6;
constexpr std::size_t kReferenceWidthAt = 7;
constexpr std::size_t kObjectCountAt = 8;
constexpr std::size_t kTopObjectAt = 16;
constexpr std::size_t kTableOffsetAt = 24;

// The trailer follows all that load() reads, so that its eight bytes are always there.
static_assert(kTrailerSize >= sizeof(std::uint64_t));

Item damaged(const char* reason) noexcept {
    Item item;
    item.reason = reason;
    return item;
}

Item valueItem(Kind kind, std::uint64_t bits) noexcept {
    Item item;
    item.kind = kind;
    item.bits = bits;
    return item;
}

Item realItem(Kind kind, double real) noexcept {
    Item item;
    item.kind = kind;
    item.real = real;
    return item;
}

bool isWidth(unsigned width) noexcept {
    return width >= 1 && width <= 8;
}

Item singletonItem(unsigned marker) noexcept {
    switch (marker) {
    case 0x00:
        return valueItem(Kind::kNull, 0);
    case 0x08:
        return valueItem(Kind::kBoolean, 0);
    case 0x09:
        return valueItem(Kind::kBoolean, 1);
    case 0x0F:
        return valueItem(Kind::kFill, 0);
    default:
        return damaged("an object of an unknown kind");
    }
}

} // namespace

std::optional<BinaryPropertyListReader> BinaryPropertyListReader::open(Bytes bytes,
                                                                       const char*& reason) {
    if (!charactersOf(bytes).starts_with(kMagic)) {
        reason = "it does not begin with bplist00";
        return std::nullopt;
    }
    if (bytes.size() < kMagic.size() + kTrailerSize) {
        reason = "it is too short for a trailer";
        return std::nullopt;
    }
    const std::byte* const trailer = bytes.data() + bytes.size() - kTrailerSize;
    BinaryPropertyListReader list;
    list.bytes_ = bytes.data();
    list.offsetWidth_ = std::to_integer<unsigned>(trailer[kOffsetWidthAt]);
    list.referenceWidth_ = std::to_integer<unsigned>(trailer[kReferenceWidthAt]);
    list.objectCount_ = BigEndian::load(trailer + kObjectCountAt, 8);
    list.topObject_ = BigEndian::load(trailer + kTopObjectAt, 8);
    list.tableOffset_ = BigEndian::load(trailer + kTableOffsetAt, 8);
    if (!isWidth(list.offsetWidth_) || !isWidth(list.referenceWidth_)) {
        reason = "its trailer names a width that is not 1 to 8 bytes";
        return std::nullopt;
    }
    if (list.tableOffset_ < kMagic.size() ||
        !rangeFits(list.tableOffset_, list.objectCount_, list.offsetWidth_,
                   bytes.size() - kTrailerSize)) {
        reason = "its offset table does not fit";
        return std::nullopt;
    }
    list.offsetShift_ = BigEndian::shiftOf(list.offsetWidth_);
    list.referenceShift_ = BigEndian::shiftOf(list.referenceWidth_);
    return list;
}

bool BinaryPropertyListReader::fits(std::uint64_t offset, std::uint64_t count,
                                    std::uint64_t width) const noexcept {
    return rangeFits(offset, count, width, tableOffset_);
}

Item BinaryPropertyListReader::anyItem(std::uint64_t object) const noexcept {
    if (object >= objectCount_) {
        return damaged("a reference to an object that is not there");
    }
    const std::uint64_t offset =
        BigEndian::load(bytes_ + tableOffset_ + object * offsetWidth_, offsetWidth_);
    if (offset < kObjectsOffset || offset >= tableOffset_) {
        return damaged("an object's offset is outside of the list");
    }
    const auto marker = std::to_integer<unsigned>(bytes_[offset]);
    switch (marker >> 4U) {
    case 0x0:
        return singletonItem(marker);
    case 0x1:
    case 0x2:
    case 0x3:
        return fits(offset + 1, std::uint64_t{1} << (marker & 0xFU), 1)
                   ? numberItem(marker, bytes_ + offset + 1)
                   : damaged("a number ends outside of the list");
    case 0x8:
        return fits(offset + 1, (marker & 0xFU) + 1, 1)
                   ? uidItem((marker & 0xFU) + 1, bytes_ + offset + 1)
                   : damaged("a UID ends outside of the list");
    default:
        return sizedItem(marker, offset + 1);
    }
}

Item BinaryPropertyListReader::numberItem(unsigned marker, const std::byte* body) const noexcept {
    switch (marker) {
    case 0x22:
        return realItem(Kind::kFloat,
                        std::bit_cast<float>(static_cast<std::uint32_t>(BigEndian::load(body, 4))));
    case 0x23:
        return realItem(Kind::kReal, std::bit_cast<double>(BigEndian::load(body, 8)));
    case 0x33:
        return realItem(Kind::kDate, std::bit_cast<double>(BigEndian::load(body, 8)));
    default:
        return marker >> 4U == 0x1 ? integerItem(marker & 0xFU, body)
                                   : damaged("a real number or date of an unknown size");
    }
}

// Integers of up to four bytes have no sign; longer ones are in two's complement.
Item BinaryPropertyListReader::integerItem(unsigned sizeExponent,
                                           const std::byte* body) const noexcept {
    if (sizeExponent <= 3) {
        return valueItem(Kind::kInteger, BigEndian::load(body, 1U << sizeExponent));
    }
    if (sizeExponent > 4) {
        return damaged("an integer of an unknown size");
    }
    const std::uint64_t high = BigEndian::load(body, 8);
    const std::uint64_t low = BigEndian::load(body + 8, 8);
    const bool negative = low >> 63U != 0;
    if (high == 0) {
        return valueItem(negative ? Kind::kUnsigned : Kind::kInteger, low);
    }
    return ~high == 0 && negative ? valueItem(Kind::kInteger, low)
                                  : damaged("an integer beyond 64 bits");
}

// Of up to sixteen bytes, of which the last eight may have a value.
Item BinaryPropertyListReader::uidItem(unsigned width, const std::byte* body) const noexcept {
    if (isWidth(width)) {
        return valueItem(Kind::kUid, BigEndian::load(body, width));
    }
    const unsigned leading = width - 8;
    return BigEndian::load(body, leading) == 0
               ? valueItem(Kind::kUid, BigEndian::load(body + leading, 8))
               : damaged("a UID beyond 64 bits");
}

// Whatever begins with a count: in the marker's low half, or in an integer after it.
Item BinaryPropertyListReader::sizedItem(unsigned marker, std::uint64_t bodyOffset) const noexcept {
    struct SizedKind {
        Kind kind;
        std::uint64_t width;
    };
    const SizedKind kinds[] = {
        {Kind::kData,       1                                 },
        {Kind::kAscii,      1                                 },
        {Kind::kUtf16,      2                                 },
        {Kind::kDamaged,    0                                 },
        {Kind::kDamaged,    0                                 },
        {Kind::kDamaged,    0                                 },
        {Kind::kArray,      referenceWidth_                   },
        {Kind::kDamaged,    0                                 },
        {Kind::kSet,        referenceWidth_                   },
        {Kind::kDictionary, std::uint64_t{2} * referenceWidth_},
    };
    const std::size_t row = (marker >> 4U) - 4U;
    if (row >= std::size(kinds) || kinds[row].kind == Kind::kDamaged) {
        return damaged("an object of an unknown kind");
    }
    std::uint64_t count = marker & 0xFU;
    if (count == 0xF) {
        const auto size =
            fits(bodyOffset, 1, 1) ? std::to_integer<unsigned>(bytes_[bodyOffset]) : 0U;
        const unsigned width = 1U << (size & 0xFU);
        if (size >> 4U != 0x1 || !isWidth(width) || !fits(bodyOffset + 1, width, 1)) {
            return damaged("a count that is no integer");
        }
        count = BigEndian::load(bytes_ + bodyOffset + 1, width);
        bodyOffset += 1 + width;
    }
    if (!fits(bodyOffset, count, kinds[row].width)) {
        return damaged("an object ends outside of the list");
    }
    Item item;
    item.kind = kinds[row].kind;
    item.count = count;
    item.body = bytes_ + bodyOffset;
    return item;
}

Item BinaryPropertyListReader::withUidOfOneKey(const Item& dictionary) const noexcept {
    const Item key = element(dictionary, 0);
    const Item value = element(dictionary, 1);
    const bool isUid = key.kind == Kind::kAscii && charactersOf(key.bytes()) == "CF$UID" &&
                       value.kind == Kind::kInteger && value.bits >> 63U == 0;
    return isUid ? valueItem(Kind::kUid, value.bits) : dictionary;
}

} // namespace NS
