#include "Platform/Foundation/PropertyListObjects.h"

#include "Platform/Foundation/Date.h"
#include "Platform/Foundation/Number.h"
#include "Platform/Foundation/Utf8.h"

#include <string>

namespace NS {

namespace {

using Kind = PropertyListNode::Kind;

Ref<Number> numberOf(const PropertyListNode& node) {
    const bool beyondSigned = !node.isNegative && node.integer >> 63U != 0;
    return beyondSigned ? Number::numberWithUnsignedLongLong(node.integer)
                        : Number::numberWithLongLong(static_cast<std::int64_t>(node.integer));
}

Ref<Number> realOf(const PropertyListNode& node) {
    return node.isSinglePrecision ? Number::numberWithFloat(static_cast<float>(node.real))
                                  : Number::numberWithDouble(node.real);
}

// Bytes above 0x7F do not belong into an ASCII text; each is taken for the character of its number.
Ref<String> asciiText(std::string_view characters) {
    if (Utf8::isAscii(characters)) {
        return String::fromAscii(characters);
    }
    std::u16string units;
    for (const char c : characters) {
        units.push_back(static_cast<unsigned char>(c));
    }
    return String::fromUtf16(units);
}

Ref<String> utf16Text(const PropertyListNode& node) {
    std::u16string units(node.count, u'\0');
    for (std::size_t i = 0; i < node.count; ++i) {
        const auto high = std::to_integer<unsigned>(node.bytes[i * 2]);
        const auto low = std::to_integer<unsigned>(node.bytes[i * 2 + 1]);
        units[i] = static_cast<char16_t>(high << 8U | low);
    }
    return String::fromUtf16(units);
}

} // namespace

RefPtr<String> textOf(const PropertyListNode& node) {
    if (node.kind == Kind::kAscii) {
        return asciiText(charactersOf(node.bytes));
    }
    return node.kind == Kind::kUtf16 ? RefPtr<String>(utf16Text(node)) : nullptr;
}

RefPtr<Object> plainObject(const PropertyListNode& node) {
    switch (node.kind) {
    case Kind::kFalse:
    case Kind::kTrue:
        return Number::numberWithBool(node.kind == Kind::kTrue);
    case Kind::kInteger:
        return numberOf(node);
    case Kind::kReal:
        return realOf(node);
    case Kind::kDate:
        return make<Date>(node.real);
    case Kind::kData:
        return Data::dataWithBytes(node.bytes);
    default:
        return textOf(node);
    }
}

} // namespace NS
