#include "Platform/Foundation/PropertyListValues.h"

#include "Platform/Foundation/BigEndian.h"
#include "Platform/Foundation/Data.h"
#include "Platform/Foundation/Date.h"
#include "Platform/Foundation/Number.h"
#include "Platform/Foundation/String.h"
#include "Platform/Foundation/Utf8.h"

namespace NS {

namespace {

using Kind = BinaryPropertyListReader::Kind;

std::uint64_t sizeOf(const PropertyListValues::Item& item) noexcept {
    return item.kind == Kind::kUtf16 ? item.count * 2 : item.count;
}

// Another object with the same characters or bytes.
Ref<Object> twinOf(Object& contents) {
    if (contents.isKindOfClass(String::kClass)) {
        return static_cast<String&>(contents).twin();
    }
    return static_cast<Data&>(contents).twin();
}

} // namespace

inline RefPtr<Object> PropertyListValues::textOfAscii(const Item& item, const char*& reason) {
    const std::string_view text = charactersOf(item.bytes());
    if (!Utf8::isAscii(text)) {
        reason = "a text that says it is ASCII and is not";
        return nullptr;
    }
    return String::fromAscii(text);
}

RefPtr<Object> PropertyListValues::otherValue(const Item& item, std::uint64_t number,
                                              const char*& reason) {
    switch (item.kind) {
    case Kind::kBoolean:
        return Number::numberWithBool(item.bits != 0);
    case Kind::kUnsigned:
        return Number::numberWithUnsignedLongLong(item.bits);
    case Kind::kFloat:
        return Number::numberWithFloat(static_cast<float>(item.real));
    case Kind::kReal:
        return Number::numberWithDouble(item.real);
    case Kind::kDate:
        return make<Date>(item.real);
    case Kind::kAscii:
        if (item.count <= bytesLeft_) {
            bytesLeft_ -= item.count;
            return textOfAscii(item, reason);
        }
        [[fallthrough]];
    case Kind::kData:
    case Kind::kUtf16:
        return madeOrShared(item, number, Form::kItself, reason);
    case Kind::kDamaged:
        reason = item.reason;
        return nullptr;
    default:
        reason = "an object where a plain value should be";
        return nullptr;
    }
}

RefPtr<Object> PropertyListValues::commonValue(const Item& item, std::uint64_t number,
                                               const char*& reason) {
    if (number >= common_.size()) {
        common_.resize(static_cast<std::size_t>(number) + 1);
    }
    RefPtr<Object>& common = common_[static_cast<std::size_t>(number)];
    if (!common) {
        common = value(item, number, reason);
    }
    return common;
}

RefPtr<Object> PropertyListValues::textOfUtf8(const Item& item, std::uint64_t number,
                                              const char*& reason) {
    if (item.kind != Kind::kData) {
        reason = item.isDamaged() ? item.reason : "no data";
        return nullptr;
    }
    return madeOrShared(item, number, Form::kTextOfUtf8, reason);
}

RefPtr<Object> PropertyListValues::madeOrShared(const Item& item, std::uint64_t number, Form form,
                                                const char*& reason) {
    const std::uint64_t size = sizeOf(item);
    if (size <= bytesLeft_) {
        bytesLeft_ -= size;
        return contents(item, form, reason);
    }
    RefPtr<Object>& shared = shared_[kForms * number + static_cast<std::uint64_t>(form)];
    if (!shared) {
        if (size > sharedBytesLeft_) {
            reason = "texts or data that overlap";
            return nullptr;
        }
        sharedBytesLeft_ -= size;
        shared = contents(item, form, reason);
    }
    return shared ? RefPtr<Object>(twinOf(*shared)) : nullptr;
}

RefPtr<Object> PropertyListValues::contents(const Item& item, Form form, const char*& reason) {
    if (form == Form::kTextOfUtf8) {
        reason = "its bytes are no UTF-8";
        return String::fromUtf8(charactersOf(item.bytes()));
    }
    if (item.kind == Kind::kData) {
        return Data::dataWithBytes(item.bytes());
    }
    if (item.kind == Kind::kUtf16) {
        return textOfUnits(item);
    }
    return textOfAscii(item, reason);
}

RefPtr<Object> PropertyListValues::textOfUnits(const Item& item) {
    units_.resize(static_cast<std::size_t>(item.count));
    for (std::size_t i = 0; i < units_.size(); ++i) {
        units_[i] = static_cast<char16_t>(BigEndian::load(item.body + 2 * i, 2));
    }
    return String::fromUtf16(units_);
}

} // namespace NS
