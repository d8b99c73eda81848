#pragma once

#include "Platform/Foundation/BigEndian.h"
#include "Platform/Foundation/Data.h"

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <optional>

namespace NS {

// A binary property list ("bplist00") seen in place: nothing is copied, and nothing is read before
// it was checked. Docs/keyed-archives.md describes the format.
//
// The list is a table of objects, each found by its number; collections hold the numbers of their
// elements. Numbers may be shared, form cycles and overlap: whoever follows them bounds the depth
// and the total. The bytes must stay where they are for as long as the reader is used.
class BinaryPropertyListReader {
  public:
    enum class Kind : std::uint8_t {
        kDamaged, // see reason
        kNull,
        kFill,
        kBoolean,
        kInteger,  // fits std::int64_t
        kUnsigned, // fits std::uint64_t only
        kFloat,    // a real number written in four bytes
        kReal,
        kDate,
        kData,
        kAscii, // the bytes are yet to be checked for being ASCII
        kUtf16, // big-endian
        kUid,
        kArray,
        kSet,
        kDictionary,
    };

    struct Item {
        Kind kind = Kind::kDamaged;
        // Bytes, characters, code units, elements or entries, all of them inside of the list.
        std::uint64_t count = 0;
        union {
            const char* reason = "it is missing"; // kDamaged
            const std::byte* body;                // kData to kUtf16 and collections
            std::uint64_t bits;                   // kBoolean, kInteger, kUnsigned, kUid
            double real;                          // kFloat, kReal, kDate: seconds since 2001
        };

        static Item ofReal(Kind kind, double real) noexcept {
            Item item;
            item.kind = kind;
            item.real = real;
            return item;
        }
        static Item ofBits(Kind kind, std::uint64_t bits) noexcept {
            Item item;
            item.kind = kind;
            item.bits = bits;
            return item;
        }
        static Item ofBody(Kind kind, std::uint64_t count, const std::byte* body) noexcept {
            Item item;
            item.kind = kind;
            item.count = count;
            item.body = body;
            return item;
        }

        Bytes bytes() const noexcept { return {body, static_cast<std::size_t>(count)}; }
        bool isDamaged() const noexcept { return kind == Kind::kDamaged; }
    };

    // Nothing, and why, when header, trailer or offset table are wrong.
    static std::optional<BinaryPropertyListReader> open(Bytes bytes, const char*& reason);

    std::uint64_t topObject() const noexcept { return topObject_; }
    std::uint64_t objectCount() const noexcept { return objectCount_; }

    // The object of a number; kDamaged when there is none or it does not fit in the list.
    Item item(std::uint64_t object) const noexcept;

    // The UID that an object is; kNoUid for whatever else item() finds, and for some UIDs that are
    // written in unusual ways.
    static constexpr std::uint64_t kNoUid = ~std::uint64_t{0};
    std::uint64_t usualUid(std::uint64_t object) const noexcept;

    // Whether two dictionaries of as many entries each have the same keys' numbers in order.
    bool haveSameKeys(const Item& a, const Item& b) const noexcept {
        return std::memcmp(a.body, b.body, static_cast<std::size_t>(a.count) * referenceWidth_) ==
               0;
    }

    // The number at a position of a collection, which must be below its count. A dictionary has its
    // keys at these positions and its values as many positions further on.
    std::uint64_t reference(const Item& collection, std::uint64_t position) const noexcept {
        return BigEndian::loadShifted(collection.body + position * referenceWidth_,
                                      referenceShift_);
    }
    // The object at a position of a collection.
    Item element(const Item& collection, std::uint64_t position) const noexcept {
        return item(reference(collection, position));
    }

    // A UID for the dictionary that XML has for one, which some converters to the binary form leave
    // as it is; anything else as it stands.
    Item withUid(const Item& item) const noexcept {
        return item.kind == Kind::kDictionary && item.count == 1 ? withUidOfOneKey(item) : item;
    }

  private:
    // What objects begin with.
    static constexpr std::uint64_t kObjectsOffset = 8;
    static constexpr unsigned kShortestUid = 0x80; // the marker of a UID of one byte

    BinaryPropertyListReader() = default;

    std::uint64_t offsetOf(std::uint64_t object) const noexcept;
    Item anyItem(std::uint64_t object) const noexcept;
    Item withUidOfOneKey(const Item& dictionary) const noexcept;
    Item numberItem(unsigned marker, const std::byte* body) const noexcept;
    Item integerItem(unsigned sizeExponent, const std::byte* body) const noexcept;
    Item sizedItem(unsigned marker, std::uint64_t bodyOffset) const noexcept;
    Item uidItem(unsigned width, const std::byte* body) const noexcept;
    bool fits(std::uint64_t offset, std::uint64_t count, std::uint64_t width) const noexcept;

    const std::byte* bytes_ = nullptr;
    std::uint64_t tableOffset_ = 0; // objects end here
    std::uint64_t objectCount_ = 0;
    std::uint64_t topObject_ = 0;
    unsigned offsetWidth_ = 0;
    unsigned referenceWidth_ = 0;
    unsigned offsetShift_ = 0; // of the widths
    unsigned referenceShift_ = 0;
};

inline std::uint64_t BinaryPropertyListReader::offsetOf(std::uint64_t object) const noexcept {
    return object < objectCount_
               ? BigEndian::loadShifted(bytes_ + tableOffset_ + object * offsetWidth_, offsetShift_)
               : 0;
}

// Two of three objects that a record refers to are UIDs of up to four bytes.
inline std::uint64_t BinaryPropertyListReader::usualUid(std::uint64_t object) const noexcept {
    const std::uint64_t offset = offsetOf(object);
    if (offset < kObjectsOffset || offset >= tableOffset_) {
        return kNoUid;
    }
    const unsigned width = std::to_integer<unsigned>(bytes_[offset]) - kShortestUid + 1;
    const bool isUsual = width - 1 < 4 && width < tableOffset_ - offset;
    return isUsual ? BigEndian::load(bytes_ + offset + 1, width) : kNoUid;
}

// Most objects of an archive are of one of these kinds, and short; for any other, and for whatever
// does not fit, this leaves the decision to anyItem().
[[gnu::always_inline]] inline BinaryPropertyListReader::Item
BinaryPropertyListReader::item(std::uint64_t object) const noexcept {
    const std::uint64_t offset = offsetOf(object);
    if (offset < kObjectsOffset || offset >= tableOffset_) [[unlikely]] {
        return anyItem(object);
    }
    const std::byte* const marker = bytes_ + offset;
    const unsigned low = std::to_integer<unsigned>(*marker) & 0xFU;
    const std::uint64_t left = tableOffset_ - offset - 1; // bytes behind the marker
    switch (std::to_integer<unsigned>(*marker >> 4)) {
    case 0x1:
        if (low <= 3 && (1U << low) <= left) {
            return Item::ofBits(Kind::kInteger, BigEndian::load(marker + 1, 1U << low));
        }
        break;
    case 0x2:
        if (low == 3 && left >= 8) {
            return Item::ofReal(Kind::kReal, std::bit_cast<double>(BigEndian::load(marker + 1, 8)));
        }
        break;
    case 0x5:
        if (low < 0xF && low <= left) {
            return Item::ofBody(Kind::kAscii, low, marker + 1);
        }
        if (low == 0xF && left >= 2 && marker[1] == std::byte{0x10}) { // up to 255 characters
            const auto count = std::to_integer<std::uint64_t>(marker[2]);
            if (count <= left - 2) {
                return Item::ofBody(Kind::kAscii, count, marker + 3);
            }
        }
        break;
    case 0x8:
        if (low < 8 && low < left) {
            return Item::ofBits(Kind::kUid, BigEndian::load(marker + 1, low + 1));
        }
        break;
    case 0xD:
        if (low < 0xF && std::uint64_t{2} * low * referenceWidth_ <= left) {
            return Item::ofBody(Kind::kDictionary, low, marker + 1);
        }
        break;
    default:
        break;
    }
    return anyItem(object);
}

} // namespace NS
