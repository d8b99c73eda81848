#pragma once

#include "Platform/Foundation/ByteBuffer.h"
#include "Platform/Foundation/Data.h"
#include "Platform/Foundation/String.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

namespace NS {

class Number;

// Puts a binary property list ("bplist00") together, an object at a time. Objects are added before
// the collections that hold them, and each is written once, where it was added: equal objects stay
// two. Offsets, references and UIDs take 1, 2, 4 or 8 bytes, since some readers know no others.
//
// What was added stands in its final form from the beginning, with references as wide as the
// objects so far need; the few times that this changes, all of it is written anew.
class BinaryPropertyListWriter {
  public:
    // An object that was added, by its number; the first one has the number 0.
    using Reference = std::uint32_t;

    BinaryPropertyListWriter();

    // Each raises NSInvalidArchiveOperationException when the list grows longer than 4 GiB.

    Reference addBool(bool value);
    Reference addInteger(std::int64_t value);
    Reference addUnsigned(std::uint64_t value);
    Reference addFloat(float value);
    Reference addReal(double value);
    // As the number's type has it.
    Reference addNumber(const Number& number);
    // Seconds since 2001-01-01 00:00:00 UTC.
    Reference addDate(double seconds);
    Reference addData(Bytes bytes);
    Reference addString(const String& text);
    Reference addAscii(std::string_view text);
    Reference addUid(std::uint64_t value);
    Reference addArray(std::span<const Reference> elements);
    // As many values as keys.
    Reference addDictionary(std::span<const Reference> keys, std::span<const Reference> values);

    // The whole list with this object on top. The writer is done then, and takes nothing more.
    ByteBuffer finish(Reference top);

  private:
    std::byte* begin(std::size_t size);
    std::byte* beginCounted(unsigned kind, std::uint64_t count, std::size_t bodySize);
    std::byte* beginCollection(unsigned kind, std::uint64_t count, std::size_t references);
    std::byte* putReferences(std::byte* out, std::span<const Reference> references) const noexcept;
    Reference lastAdded() const noexcept { return static_cast<Reference>(offsets_.size() - 1); }
    Reference addEightBytes(unsigned marker, std::uint64_t bits);
    void widen();
    void widenObject(std::size_t object, ByteBuffer& wider, unsigned width) const;
    std::size_t endOf(std::size_t object) const noexcept;
    void putTrailer(std::byte* out, unsigned offsetWidth, Reference top,
                    std::uint64_t table) const noexcept;

    ByteBuffer bytes_;
    std::vector<std::uint32_t> offsets_; // of each object
    unsigned referenceWidth_ = 1;
    std::size_t referenceLimit_; // with more objects than this, references are wider
};

} // namespace NS
