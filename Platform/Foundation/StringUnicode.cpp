#include "Platform/Foundation/Exception.h"
#include "Platform/Foundation/String.h"

#include <unicode/locid.h>
#include <unicode/normalizer2.h>
#include <unicode/unistr.h>

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

} // namespace

Ref<String> String::lowercaseString() const {
    if (isAscii()) {
        std::string lower(ascii());
        std::ranges::transform(lower, lower.begin(), [](char c) {
            return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
        });
        return fromAscii(lower);
    }
    const icu::UnicodeString lower = inPlace(utf16()).toLower(icu::Locale::getRoot());
    check(lower.isBogus() ? U_MEMORY_ALLOCATION_ERROR : U_ZERO_ERROR);
    return fromUtf16(unitsOf(lower));
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
