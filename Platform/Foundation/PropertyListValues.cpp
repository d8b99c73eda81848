#include "Platform/Foundation/PropertyListValues.h"

#include "Platform/Foundation/BigEndian.h"
#include "Platform/Foundation/Data.h"
#include "Platform/Foundation/Date.h"
#include "Platform/Foundation/Number.h"
#include "Platform/Foundation/String.h"
#include "Platform/Foundation/Utf8.h"

namespace NS {

namespace {

using Item = BinaryPropertyListReader::Item;
using Kind = BinaryPropertyListReader::Kind;

std::uint64_t sizeOf(const Item& item) noexcept {
    return item.kind == Kind::kUtf16 ? item.count * 2 : item.count;
}

} // namespace

RefPtr<Object> PropertyListValues::value(const Item& item, std::uint64_t number,
                                         const char*& reason) {
    switch (item.kind) {
    case Kind::kBoolean:
        return Number::numberWithBool(item.bits != 0);
    case Kind::kInteger:
        return Number::numberWithLongLong(static_cast<std::int64_t>(item.bits));
    case Kind::kUnsigned:
        return Number::numberWithUnsignedLongLong(item.bits);
    case Kind::kFloat:
        return Number::numberWithFloat(static_cast<float>(item.real));
    case Kind::kReal:
        return Number::numberWithDouble(item.real);
    case Kind::kDate:
        return make<Date>(item.real);
    case Kind::kData:
    case Kind::kAscii:
    case Kind::kUtf16:
        return spendBytes(sizeOf(item)) ? contents(item, reason)
                                        : sharedContents(item, number, reason);
    case Kind::kDamaged:
        reason = item.reason;
        return nullptr;
    default:
        reason = "an object where a plain value should be";
        return nullptr;
    }
}

bool PropertyListValues::spendBytes(std::uint64_t count) noexcept {
    if (count > bytesLeft_) {
        return false;
    }
    bytesLeft_ -= count;
    return true;
}

RefPtr<Object> PropertyListValues::contents(const Item& item, const char*& reason) {
    if (item.kind == Kind::kData) {
        return Data::dataWithBytes(item.bytes());
    }
    if (item.kind == Kind::kAscii) {
        const std::string_view text = charactersOf(item.bytes());
        if (!Utf8::isAscii(text)) {
            reason = "a text that says it is ASCII and is not";
            return nullptr;
        }
        return String::fromAscii(text);
    }
    units_.resize(static_cast<std::size_t>(item.count));
    for (std::size_t i = 0; i < units_.size(); ++i) {
        units_[i] = static_cast<char16_t>(BigEndian::load(item.body + 2 * i, 2));
    }
    return String::fromUtf16(units_);
}

RefPtr<Object> PropertyListValues::sharedContents(const Item& item, std::uint64_t number,
                                                  const char*& reason) {
    if (const auto known = shared_.find(number); known != shared_.end()) {
        return known->second;
    }
    if (sizeOf(item) > sharedBytesLeft_) {
        reason = "texts or data that overlap";
        return nullptr;
    }
    sharedBytesLeft_ -= sizeOf(item);
    RefPtr<Object> made = contents(item, reason);
    shared_.emplace(number, made);
    return made;
}

} // namespace NS
