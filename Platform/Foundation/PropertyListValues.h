#pragma once

#include "Platform/Foundation/BinaryPropertyListReader.h"
#include "Platform/Foundation/Number.h"
#include "Platform/Foundation/Object.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <unordered_map>
#include <vector>

namespace NS {

// Makes the plain values of one property list: booleans, numbers, dates, texts and data.
//
// Each call makes a new object, save where it says otherwise. When texts and data have come to more
// bytes than the whole list has, which takes a list that refers to the same ones again and again,
// the objects that are made for the same number share its characters or bytes from then on, so that
// memory stays bounded. A list whose objects overlap can still ask for more, and is refused.
//
// A call gives nil, and why, when the item is no plain value, or a damaged one.
class PropertyListValues {
  public:
    using Item = BinaryPropertyListReader::Item;

    explicit PropertyListValues(std::size_t listSize) noexcept
        : bytesLeft_(listSize), sharedBytesLeft_(kForms * std::uint64_t{listSize}) {}

    // The value of an item, which has this number in the list.
    RefPtr<Object> value(const Item& item, std::uint64_t number, const char*& reason) {
        if (item.kind == BinaryPropertyListReader::Kind::kInteger) { // the most common of these
            return Number::numberWithLongLong(static_cast<std::int64_t>(item.bits));
        }
        return otherValue(item, number, reason);
    }
    // The same, and the same object for the same number at every call of this: for lists that hold
    // the values themselves and may do so a million times.
    RefPtr<Object> commonValue(const Item& item, std::uint64_t number, const char*& reason);
    // The text that an item's data are the UTF-8 of.
    RefPtr<Object> textOfUtf8(const Item& item, std::uint64_t number, const char*& reason);

  private:
    enum class Form : std::uint8_t { kItself, kTextOfUtf8 };
    static constexpr std::uint64_t kForms = 2;

    RefPtr<Object> otherValue(const Item& item, std::uint64_t number, const char*& reason);
    RefPtr<Object> madeOrShared(const Item& item, std::uint64_t number, Form form,
                                const char*& reason);
    RefPtr<Object> contents(const Item& item, Form form, const char*& reason);
    static RefPtr<Object> textOfAscii(const Item& item, const char*& reason);
    RefPtr<Object> textOfUnits(const Item& item);

    std::uint64_t bytesLeft_;
    std::uint64_t sharedBytesLeft_;
    std::unordered_map<std::uint64_t, RefPtr<Object>> shared_; // by number and form
    std::vector<RefPtr<Object>> common_;                       // by number
    std::u16string units_;                                     // kept for its storage
};

} // namespace NS
