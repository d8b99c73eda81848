#pragma once

#include "Platform/Foundation/BigEndian.h"
#include "Platform/Foundation/ByteBuffer.h"
#include "Platform/Foundation/Data.h"
#include "Platform/Foundation/String.h"

#include <bit>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <span>
#include <string_view>
#include <utility>

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
    Reference addInteger(std::int64_t value) {
        const auto bits = static_cast<std::uint64_t>(value);
        const unsigned width = machineWidthOf(bits);
        return addNumber(0x10U | static_cast<unsigned>(std::countr_zero(width)), bits, width);
    }
    Reference addUnsigned(std::uint64_t value);
    Reference addFloat(float value);
    Reference addReal(double value) {
        return addNumber(0x23, std::bit_cast<std::uint64_t>(value), 8);
    }
    // As the number's type has it.
    Reference addNumber(const Number& number);
    // Seconds since 2001-01-01 00:00:00 UTC.
    Reference addDate(double seconds) {
        return addNumber(0x33, std::bit_cast<std::uint64_t>(seconds), 8);
    }
    Reference addData(Bytes bytes);
    Reference addString(const String& text);
    Reference addAscii(std::string_view text);
    Reference addUid(std::uint64_t value) {
        if (value < 0x100) {
            return addNumber(0x80, value, 1);
        }
        return value < 0x10000 ? addNumber(0x81, value, 2) : addLongUid(value);
    }
    Reference addArray(std::span<const Reference> elements);
    // As many values as keys.
    Reference addDictionary(std::span<const Reference> keys, std::span<const Reference> values);

    // The whole list with this object on top. The writer is done then, and takes nothing more.
    ByteBuffer finish(Reference top);
    // The same in the memory where it was put together: valid until that is taken or used again.
    Bytes finishInPlace(Reference top);
    ByteBuffer takeBytes() noexcept { return std::move(bytes_); }

    // Begins another list in the memory of the one before, or in that of the expected length where
    // it has none.
    void reset(std::size_t expectedLength = 0);
    // Bytes of memory that the list stands in, and of all that it holds.
    std::size_t listBytes() const noexcept { return bytes_.heldBytes(); }
    std::size_t heldBytes() const noexcept { return bytes_.heldBytes() + offsets_.heldBytes(); }

  private:
    // Numbers are written with the bytes behind them, which what comes next is written over.
    static constexpr std::size_t kAhead = sizeof(std::uint64_t);
    static constexpr std::uint64_t kLongest = std::numeric_limits<std::uint32_t>::max();

    // The fewest bytes for the number that are also those of an integer of a machine.
    static constexpr unsigned machineWidthOf(std::uint64_t value) noexcept {
        return value < 0x100 ? 1U : (value < 0x10000 ? 2U : (value >> 32U == 0 ? 4U : 8U));
    }

    // Begins an object and gives room for its bytes, and some more.
    std::byte* begin(std::size_t size) {
        if (count_ == prepared_) [[unlikely]] {
            prepareMore();
        }
        const std::size_t offset = bytes_.size();
        if (size > kLongest - offset) [[unlikely]] {
            raiseTooLong();
        }
        std::byte* const out = bytes_.room(size + kAhead);
        offsets_[count_++] = static_cast<std::uint32_t>(offset);
        bytes_.extend(size);
        return out;
    }

    // Adds a marker with a number behind it.
    Reference addNumber(unsigned marker, std::uint64_t bits, unsigned width) {
        std::byte* const out = begin(1 + width);
        *out = static_cast<std::byte>(marker);
        BigEndian::storeAhead(out + 1, bits, width);
        return lastAdded();
    }

    [[noreturn]] static void raiseTooLong();
    // Begins an object with its count, and gives room for its body.
    std::byte* beginCounted(unsigned kind, std::uint64_t count, std::size_t bodySize) {
        if (count < 0xF) {
            std::byte* const out = begin(1 + bodySize);
            *out = static_cast<std::byte>(kind << 4U | count);
            return out + 1;
        }
        return count <= 0xFF ? beginOfByte(kind, count, bodySize)
                             : beginLong(kind, count, bodySize);
    }
    // With the count in an integer of one byte, as most texts have it.
    std::byte* beginOfByte(unsigned kind, std::uint64_t count, std::size_t bodySize) {
        std::byte* const out = begin(3 + bodySize);
        out[0] = static_cast<std::byte>(kind << 4U | 0xFU);
        out[1] = std::byte{0x10};
        out[2] = static_cast<std::byte>(count);
        return out + 3;
    }
    std::byte* beginLong(unsigned kind, std::uint64_t count, std::size_t bodySize);
    std::byte* beginCollection(unsigned kind, std::uint64_t count, std::size_t references);
    std::byte* putReferences(std::byte* out, std::span<const Reference> references) const noexcept;
    Reference lastAdded() const noexcept { return count_ - 1; }
    Reference addLongUid(std::uint64_t value);
    void prepareMore();
    void widen();
    void widenObject(Bytes object, unsigned width);
    void putTrailer(std::byte* out, unsigned offsetWidth, Reference top,
                    std::uint64_t table) const noexcept;

    ByteBuffer bytes_;
    GrowingBuffer<std::uint32_t> offsets_; // of each object, and places for those to come
    Reference count_ = 0;                  // of the objects
    Reference prepared_ = 0; // how many may come until there have to be places or wider references
    unsigned referenceWidth_ = 0;
};

} // namespace NS
