#pragma once

#include "Platform/Foundation/BinaryPropertyListReader.h"
#include "Platform/Foundation/Object.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <unordered_map>

namespace NS {

// Makes the plain values of one property list: booleans, numbers, dates, texts and data.
//
// Each call makes a new object. Only when texts and data have come to more bytes than the whole
// list has, which takes a list that refers to the same ones again and again, the same object is
// given out for the same number from then on: they never change, and memory stays bounded.
class PropertyListValues {
  public:
    explicit PropertyListValues(std::size_t listSize) noexcept
        : bytesLeft_(listSize), sharedBytesLeft_(listSize) {}

    // The value of an item, which has this number in the list. Nil, and why, when the item is no
    // plain value, or a damaged one.
    RefPtr<Object> value(const BinaryPropertyListReader::Item& item, std::uint64_t number,
                         const char*& reason);

    // Accounts for a copy of that many bytes that somebody else makes. False when texts and data
    // have come to too many.
    bool spendBytes(std::uint64_t count) noexcept;

  private:
    RefPtr<Object> contents(const BinaryPropertyListReader::Item& item, const char*& reason);
    RefPtr<Object> sharedContents(const BinaryPropertyListReader::Item& item, std::uint64_t number,
                                  const char*& reason);

    std::uint64_t bytesLeft_;
    std::uint64_t sharedBytesLeft_;
    std::unordered_map<std::uint64_t, RefPtr<Object>> shared_;
    std::u16string units_; // kept for its storage
};

} // namespace NS
