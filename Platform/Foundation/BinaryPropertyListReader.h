#pragma once

#include "Platform/Foundation/Data.h"

#include <cstdint>
#include <optional>

namespace NS {

// One object of a binary property list, in place.
struct PropertyListNode {
    enum class Kind : std::uint8_t {
        kNull,
        kFalse,
        kTrue,
        kInteger,   // in integer, which is negative where isNegative says so
        kReal,      // in real, from 4 or 8 bytes
        kDate,      // in real, seconds since 2001-01-01
        kData,      // bytes
        kAscii,     // bytes
        kUtf16,     // bytes, count units, highest byte first
        kUid,       // in integer
        kArray,     // bytes are count references
        kSet,       // the same
        kDictionary // count references to keys, then as many to values
    };

    Kind kind = Kind::kNull;
    bool isNegative = false;
    bool isSinglePrecision = false;
    std::size_t count = 0;
    std::uint64_t integer = 0; // two's complement
    double real = 0;
    Bytes bytes;
};

// A binary property list ("bplist00") as it lies in memory: nothing is copied, and nothing is
// believed before it is checked. Refers to bytes that outlive it. Any thread.
// Docs/keyed-archives.md has the layout.
class BinaryPropertyListReader {
  public:
    // Nothing when the trailer or the offset table is not sound.
    static std::optional<BinaryPropertyListReader> open(Bytes bytes);

    std::size_t objectCount() const noexcept { return objectCount_; }
    std::size_t topObject() const noexcept { return topObject_; }
    std::size_t size() const noexcept { return bytes_.size(); }

    // An object by its number; nothing when it does not lie within the list or is of no known kind.
    std::optional<PropertyListNode> object(std::size_t number) const;
    // The number of the object that a collection refers to at an index below its count (twice its
    // count for a dictionary); nothing when there is no such object.
    std::optional<std::size_t> reference(const PropertyListNode& collection,
                                         std::size_t index) const;

  private:
    BinaryPropertyListReader() = default;

    Bytes bytes_;
    Bytes objects_; // header and objects: what lies before the offset table
    Bytes offsets_;
    std::size_t offsetWidth_ = 0;
    std::size_t referenceWidth_ = 0;
    std::size_t objectCount_ = 0;
    std::size_t topObject_ = 0;
};

} // namespace NS
