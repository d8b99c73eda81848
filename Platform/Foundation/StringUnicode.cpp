#include "Platform/Foundation/Exception.h"
#include "Platform/Foundation/String.h"

#include <unicode/locid.h>
#include <unicode/normalizer2.h>
#include <unicode/uchar.h>
#include <unicode/unistr.h>
#include <unicode/utf16.h>

#include <algorithm>
#include <cstdint>
#include <string>
#include <string_view>

// Unicode's own tables, by way of ICU.
namespace NS {

namespace {

void check(UErrorCode status) {
    if (U_FAILURE(status)) {
        Exception::raise(kGenericException, std::string("Unicode data: ") + u_errorName(status));
    }
}

// The units as ICU's text, without a copy.
icu::UnicodeString inPlace(std::u16string_view units) {
    return {false, units.data(), static_cast<std::int32_t>(units.size())};
}

std::u16string_view unitsOf(const icu::UnicodeString& text) {
    return {text.getBuffer(), static_cast<std::size_t>(text.length())};
}

constexpr char lowerAscii(char c) noexcept {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

// The two characters whose lower case is not one character, or depends on where they stand.
constexpr bool lowersIrregularly(UChar32 character) noexcept {
    constexpr UChar32 kCapitalIWithDot = 0x130;
    constexpr UChar32 kCapitalSigma = 0x3A3;
    return character == kCapitalIWithDot || character == kCapitalSigma;
}

// The character of a text at an index, which moves behind it; a lone surrogate is one.
UChar32 nextCharacter(const String& text, std::size_t& index) noexcept {
    if (text.isAscii()) {
        return static_cast<unsigned char>(text.ascii()[index++]);
    }
    const std::u16string_view units = text.utf16();
    const char16_t unit = units[index++];
    const bool isPair = unit >= 0xD800 && unit < 0xDC00 && index < units.size() &&
                        units[index] >= 0xDC00 && units[index] < 0xE000;
    return isPair ? U16_GET_SUPPLEMENTARY(unit, units[index++]) : unit;
}

} // namespace

Ref<String> String::lowercaseString() const {
    if (isAscii()) {
        std::string lower(ascii());
        std::ranges::transform(lower, lower.begin(), lowerAscii);
        return fromAscii(lower);
    }
    const icu::UnicodeString lower = inPlace(utf16()).toLower(icu::Locale::getRoot());
    check(lower.isBogus() ? U_MEMORY_ALLOCATION_ERROR : U_ZERO_ERROR);
    return fromUtf16(unitsOf(lower));
}

bool String::lowercaseEquals(const String& lowercase) const {
    if (isAscii()) {
        return lowercase.isAscii() &&
               std::ranges::equal(ascii(), lowercase.ascii(), {}, lowerAscii);
    }
    std::size_t index = 0;
    std::size_t lowerIndex = 0;
    while (index < length()) {
        const UChar32 character = nextCharacter(*this, index);
        if (lowersIrregularly(character)) {
            return lowercaseString()->isEqualToString(lowercase);
        }
        if (lowerIndex == lowercase.length() ||
            nextCharacter(lowercase, lowerIndex) != u_tolower(character)) {
            return false;
        }
    }
    return lowerIndex == lowercase.length();
}

Ref<String> String::decomposedStringWithCanonicalMapping() const {
    if (isAscii()) {
        return fromAscii(ascii());
    }
    UErrorCode status = U_ZERO_ERROR;
    const icu::Normalizer2* const nfd = icu::Normalizer2::getNFDInstance(status);
    check(status);
    const icu::UnicodeString decomposed = nfd->normalize(inPlace(utf16()), status);
    check(status);
    return fromUtf16(unitsOf(decomposed));
}

} // namespace NS
