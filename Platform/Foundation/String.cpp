#include "Platform/Foundation/String.h"

#include "Platform/Foundation/Exception.h"
#include "Platform/Foundation/StringBuilder.h"
#include "Platform/Foundation/Utf8.h"

#include <algorithm>
#include <cassert>
#include <cstring>
#include <new>

namespace NS {

constinit const Class String::kClass{.name = "NSString", .superclass = &Object::kClass};
constinit const Class MutableString::kClass{.name = "NSMutableString",
                                            .superclass = &String::kClass};

namespace {

bool allAscii(std::u16string_view units) noexcept {
    return std::ranges::all_of(units, [](char16_t unit) { return unit < 0x80; });
}

// The two widths never hold equal text, since a wide text has a unit beyond ASCII.
template <class Narrow, class Wide>
auto onCharacters(const String& text, Narrow&& narrow, Wide&& wide) {
    return text.isAscii() ? narrow(text.ascii()) : wide(text.utf16());
}

char16_t unitAt(const String& text, std::size_t index) noexcept {
    return text.isAscii() ? static_cast<unsigned char>(text.ascii()[index]) : text.utf16()[index];
}

bool regionMatches(const String& text, std::size_t offset, const String& part) noexcept {
    for (std::size_t i = 0; i < part.length(); ++i) {
        if (unitAt(text, offset + i) != unitAt(part, i)) {
            return false;
        }
    }
    return true;
}

// Where part stands in text at offset, comparing in one go where the widths agree.
bool matchesAt(const String& text, std::size_t offset, const String& part) noexcept {
    if (offset > text.length() || text.length() - offset < part.length()) {
        return false;
    }
    if (text.isAscii() && part.isAscii()) {
        return text.ascii().substr(offset, part.length()) == part.ascii();
    }
    if (!text.isAscii() && !part.isAscii()) {
        return text.utf16().substr(offset, part.length()) == part.utf16();
    }
    return regionMatches(text, offset, part);
}

std::optional<std::size_t> foundAt(std::size_t position) noexcept {
    return position == std::string_view::npos ? std::nullopt : std::optional(position);
}

void checkRange(const String& text, std::size_t location, std::size_t length) {
    if (location > text.length() || length > text.length() - location) {
        Exception::raise(kRangeException, "Range or index out of bounds");
    }
}

} // namespace

static_assert(sizeof(String) == 16, "a short text fits one small allocation");

Ref<String> String::allocate(std::size_t length, bool wide) {
    if (length > kLengthMask) {
        Exception::raise(kInvalidArgumentException, "a text is longer than a string can be");
    }
    const std::size_t size = sizeof(String) + length * (wide ? sizeof(char16_t) : sizeof(char));
    void* const storage = Object::operator new(size);
    const auto header = static_cast<std::uint32_t>(length) | (wide ? kWide : 0U);
    return Ref<String>(*::new (storage) String(header), kAdopt);
}

Ref<String> String::fromAscii(std::string_view characters) {
    assert(Utf8::isAscii(characters));
    const Ref<String> result = allocate(characters.size(), false);
    characters.copy(result->asciiStorage(), characters.size());
    return result;
}

Ref<String> String::fromUtf16(std::u16string_view units) {
    const bool narrow = allAscii(units);
    const Ref<String> result = allocate(units.size(), !narrow);
    if (narrow) {
        std::ranges::transform(units, result->asciiStorage(),
                               [](char16_t unit) { return static_cast<char>(unit); });
    } else {
        units.copy(result->utf16Storage(), units.size());
    }
    return result;
}

RefPtr<String> String::fromUtf8(std::string_view bytes) {
    if (Utf8::isAscii(bytes)) {
        return fromAscii(bytes);
    }
    std::u16string units;
    units.reserve(bytes.size());
    while (!bytes.empty()) {
        const Utf8::Decoded decoded = Utf8::decodeFirst(bytes);
        if (!decoded.valid) {
            return nullptr;
        }
        Utf8::appendUtf16(units, decoded.codePoint);
        bytes.remove_prefix(decoded.length);
    }
    return fromUtf16(units);
}

Ref<String> String::fromFileSystemRepresentation(std::string_view bytes) {
    if (Utf8::isAscii(bytes)) {
        return fromAscii(bytes);
    }
    std::u16string units;
    units.reserve(bytes.size());
    while (!bytes.empty()) {
        const Utf8::Decoded decoded = Utf8::decodeFirst(bytes);
        if (decoded.valid) {
            Utf8::appendUtf16(units, decoded.codePoint);
            bytes.remove_prefix(decoded.length);
        } else {
            units.push_back(static_cast<char16_t>(Utf8::kEscapedByte +
                                                  static_cast<unsigned char>(bytes.front())));
            bytes.remove_prefix(1);
        }
    }
    return fromUtf16(units);
}

const String& String::indirectContents() const noexcept {
    return *static_cast<const IndirectString*>(this)->text_;
}

std::string_view String::ascii() const noexcept {
    const String& text = contents();
    if ((text.header_ & kWide) != 0) {
        return {};
    }
    return {reinterpret_cast<const char*>(&text + 1), text.header_ & kLengthMask};
}

std::u16string_view String::utf16() const noexcept {
    const String& text = contents();
    if ((text.header_ & kWide) == 0) {
        return {};
    }
    return {reinterpret_cast<const char16_t*>(&text + 1), text.header_ & kLengthMask};
}

char16_t String::characterAtIndex(std::size_t index) const {
    checkRange(*this, index, 1);
    return unitAt(*this, index);
}

std::string String::encoded(bool restoreFileNameBytes) const {
    if (isAscii()) {
        return std::string(ascii());
    }
    std::string bytes;
    std::u16string_view units = utf16();
    bytes.reserve(units.size() * 3);
    while (!units.empty()) {
        const Utf8::FromUtf16 next = Utf8::codePointAtFront(units);
        if (restoreFileNameBytes && Utf8::isEscapedByte(next.codePoint)) {
            bytes.push_back(static_cast<char>(next.codePoint - Utf8::kEscapedByte));
        } else {
            Utf8::append(bytes,
                         Utf8::isSurrogate(next.codePoint) ? Utf8::kReplacement : next.codePoint);
        }
        units.remove_prefix(next.length);
    }
    return bytes;
}

std::string String::utf8() const {
    return encoded(false);
}

std::string String::fileSystemRepresentation() const {
    return encoded(true);
}

bool String::isEqualToString(const String& other) const noexcept {
    const String& a = contents();
    const String& b = other.contents();
    const std::size_t length = a.header_ & kLengthMask;
    const std::size_t unit = (a.header_ & kWide) != 0 ? sizeof(char16_t) : sizeof(char);
    // The characters stand behind the object.
    const void* const left = &a + 1;
    const void* const right = &b + 1;
    return a.header_ == b.header_ && std::memcmp(left, right, length * unit) == 0;
}

int String::compare(const String& other) const noexcept {
    const std::size_t common = std::min(length(), other.length());
    for (std::size_t i = 0; i < common; ++i) {
        const int difference = unitAt(*this, i) - unitAt(other, i);
        if (difference != 0) {
            return difference;
        }
    }
    return length() == other.length() ? 0 : (length() < other.length() ? -1 : 1);
}

bool String::hasPrefix(const String& prefix) const noexcept {
    return matchesAt(*this, 0, prefix);
}

bool String::hasSuffix(const String& suffix) const noexcept {
    return suffix.length() <= length() && matchesAt(*this, length() - suffix.length(), suffix);
}

std::optional<std::size_t> String::rangeOfString(const String& text) const noexcept {
    if (text.length() == 0) {
        return std::nullopt;
    }
    if (isAscii() && text.isAscii()) {
        return foundAt(ascii().find(text.ascii()));
    }
    if (!isAscii() && !text.isAscii()) {
        return foundAt(utf16().find(text.utf16()));
    }
    for (std::size_t i = 0; i + text.length() <= length(); ++i) {
        if (matchesAt(*this, i, text)) {
            return i;
        }
    }
    return std::nullopt;
}

Ref<String> String::substringFromIndex(std::size_t index) const {
    checkRange(*this, index, 0);
    return substringWithRange(index, length() - index);
}

Ref<String> String::substringToIndex(std::size_t index) const {
    return substringWithRange(0, index);
}

Ref<String> String::substringWithRange(std::size_t location, std::size_t count) const {
    checkRange(*this, location, count);
    return onCharacters(
        *this, [&](std::string_view c) { return fromAscii(c.substr(location, count)); },
        [&](std::u16string_view c) { return fromUtf16(c.substr(location, count)); });
}

Ref<String> String::stringByAppendingString(const String& suffix) const {
    StringBuilder builder;
    builder.append(*this);
    builder.append(suffix);
    return builder.string();
}

bool String::isEqual(const Object* other) const {
    const auto* text = as<String>(other);
    return text != nullptr && isEqualToString(*text);
}

std::size_t String::hash() const {
    return onCharacters(
        *this, [](std::string_view c) { return hashOfBytes(c); },
        [](std::u16string_view c) {
            return hashOfBytes(
                {reinterpret_cast<const char*>(c.data()), c.size() * sizeof(char16_t)});
        });
}

Ref<String> String::copy() const {
    return header_ == (kIndirect | kNeverChanges) ? Ref<String>(const_cast<String&>(*this))
                                                  : directOf(*this);
}

Ref<MutableString> String::mutableCopy() const {
    return make<MutableString>(*this);
}

Ref<String> String::description() const {
    return copy();
}

Ref<String> String::twin() const {
    class Twin final : public IndirectString {
      public:
        explicit Twin(Ref<String> direct) : IndirectString(std::move(direct), kNeverChanges) {}
    };
    return make<Twin>(directOf(*this));
}

MutableString::MutableString(const String& text) : IndirectString(directOf(text), 0) {}

void MutableString::setString(const String& text) {
    text_ = directOf(text);
}

void MutableString::appendString(const String& text) {
    text_ = stringByAppendingString(text);
}

Ref<String> str(std::string_view utf8) {
    RefPtr<String> text = String::fromUtf8(utf8);
    if (!text) {
        Exception::raise(kInvalidArgumentException, "text is not valid UTF-8");
    }
    return Ref<String>(*text);
}

} // namespace NS
