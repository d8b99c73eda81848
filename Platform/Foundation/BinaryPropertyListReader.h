#pragma once

#include "Platform/Foundation/Data.h"

#include <cstddef>
#include <cstdint>
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

        Bytes bytes() const noexcept { return {body, static_cast<std::size_t>(count)}; }
        bool isDamaged() const noexcept { return kind == Kind::kDamaged; }
    };

    // Nothing, and why, when header, trailer or offset table are wrong.
    static std::optional<BinaryPropertyListReader> open(Bytes bytes, const char*& reason);

    std::uint64_t topObject() const noexcept { return topObject_; }
    std::uint64_t objectCount() const noexcept { return objectCount_; }

    // The object of a number; kDamaged when there is none or it does not fit in the list.
    Item item(std::uint64_t object) const noexcept;

    // The number at a position of a collection, which must be below its count. A dictionary has its
    // keys at these positions and its values as many positions further on.
    std::uint64_t reference(const Item& collection, std::uint64_t position) const noexcept;
    // The object at a position of a collection.
    Item element(const Item& collection, std::uint64_t position) const noexcept {
        return item(reference(collection, position));
    }

    // A UID for the dictionary that XML has for one, which some converters to the binary form leave
    // as it is; anything else as it stands.
    Item withUid(const Item& item) const noexcept;

  private:
    BinaryPropertyListReader() = default;

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
};

} // namespace NS
