#include "Platform/Foundation/KeyedArchiveErrors.h"

#include "Platform/Foundation/BigEndian.h"
#include "Platform/Foundation/Exception.h"
#include "Platform/Foundation/Format.h"
#include "Platform/Foundation/Limits.h"
#include "Platform/Foundation/Utf8.h"

#include <string>

namespace NS {

namespace {

using Item = BinaryPropertyListReader::Item;
using Kind = BinaryPropertyListReader::Kind;

bool utf16Equals(Bytes units, std::string_view utf8) noexcept {
    std::u16string expected;
    std::size_t position = 0;
    while (!utf8.empty()) {
        const Utf8::Decoded next = Utf8::decodeFirst(utf8);
        expected.clear();
        Utf8::appendUtf16(expected, next.codePoint);
        for (const char16_t unit : expected) {
            if (position + 2 > units.size() ||
                BigEndian::load(units.data() + position, 2) != unit) {
                return false;
            }
            position += 2;
        }
        utf8.remove_prefix(next.length);
    }
    return position == units.size();
}

} // namespace

void raiseIncomprehensible(const char* reason) {
    Exception::raise(kInvalidArgumentException,
                     stringWithFormat("*** -[NSKeyedUnarchiver initForReadingWithData:]: "
                                      "incomprehensible archive: %s",
                                      reason));
}

void raiseInvalid(const Ref<String>& reason) {
    Exception::raise(kInvalidUnarchiveOperationException,
                     stringWithFormat("*** -[NSKeyedUnarchiver decodeObjectForKey:]: %@", reason));
}

Ref<String> quoted(const String& name) {
    return name.length() <= Limits::kQuotedName
               ? name.substringFromIndex(0)
               : name.substringToIndex(Limits::kQuotedName)->stringByAppendingString(*str("…"));
}

Ref<String> quoted(std::string_view name) {
    return quoted(*String::fromFileSystemRepresentation(name.substr(0, Limits::kQuotedName + 1)));
}

void checkIntact(const Item& item) {
    if (item.isDamaged()) {
        raiseIncomprehensible(item.reason);
    }
}

bool isText(const Item& item, std::string_view utf8) noexcept {
    if (item.kind == Kind::kAscii) {
        return charactersOf(item.bytes()) == utf8;
    }
    return item.kind == Kind::kUtf16 && utf16Equals({item.body, item.count * 2}, utf8);
}

} // namespace NS
