#pragma once

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
class BinaryPropertyListWriter {
  public:
    // An object that was added, by its number; the first one has the number 0.
    using Reference = std::uint32_t;

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

    // The whole list with this object on top. Raises NSInvalidArchiveOperationException when it
    // would be longer than 4 GiB.
    std::vector<std::byte> finish(Reference top) const;

  private:
    // A collection keeps its references on the tape in four bytes each, in this machine's order,
    // until their number, and with it their width in the list, is known.
    struct Collection {
        Reference object;
        std::uint32_t referenceCount;
    };

    struct Layout {
        unsigned referenceWidth;
        unsigned offsetWidth;
        std::uint64_t tableOffset;
    };

    std::byte* begin(std::size_t size);
    std::byte* beginCounted(unsigned kind, std::uint64_t count, std::size_t bodySize);
    Reference lastAdded() const noexcept { return static_cast<Reference>(offsets_.size() - 1); }
    Reference addEightBytes(unsigned marker, std::uint64_t bits);
    std::uint64_t endOf(Reference object) const noexcept;
    Layout layout() const;
    void emitObjects(const Layout& layout, std::byte* out) const;
    void emitOffsets(const Layout& layout, std::byte* out) const;
    void emitTrailer(const Layout& layout, Reference top, std::byte* out) const;

    std::vector<std::byte> tape_;
    std::vector<std::uint32_t> offsets_; // of each object, on the tape
    std::vector<Collection> collections_;
    std::uint64_t referenceCount_ = 0;
};

} // namespace NS
