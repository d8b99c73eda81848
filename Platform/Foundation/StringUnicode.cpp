#include "Platform/Foundation/Exception.h"
#include "Platform/Foundation/String.h"

#include <unicode/normalizer2.h>
#include <unicode/ucasemap.h>
#include <unicode/unistr.h>
#include <unicode/ustring.h>

#include <algorithm>
#include <string>

// Unicode's own tables, by way of ICU.
namespace NS {

namespace {

void check(UErrorCode status) {
    if (U_FAILURE(status)) {
        Exception::raise(kGenericException, std::string("Unicode data: ") + u_errorName(status));
    }
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
    const std::u16string_view text = utf16();
    const auto length = static_cast<std::int32_t>(text.size());
    std::u16string lower(text.size() * 3, u'\0'); // no lower case is longer than three units
    UErrorCode status = U_ZERO_ERROR;
    const std::int32_t lowerLength = u_strToLower(
        lower.data(), static_cast<std::int32_t>(lower.size()), text.data(), length, "", &status);
    check(status);
    return fromUtf16({lower.data(), static_cast<std::size_t>(lowerLength)});
}

Ref<String> String::decomposedStringWithCanonicalMapping() const {
    if (isAscii()) {
        return fromAscii(ascii());
    }
    UErrorCode status = U_ZERO_ERROR;
    const icu::Normalizer2* const nfd = icu::Normalizer2::getNFDInstance(status);
    check(status);
    const std::u16string_view text = utf16();
    const icu::UnicodeString source(false, text.data(), static_cast<std::int32_t>(text.size()));
    icu::UnicodeString decomposed;
    nfd->normalize(source, decomposed, status);
    check(status);
    return fromUtf16({decomposed.getBuffer(), static_cast<std::size_t>(decomposed.length())});
}

} // namespace NS
