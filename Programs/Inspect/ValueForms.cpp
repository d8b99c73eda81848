#include "Programs/Inspect/ValueForms.h"

#include "Platform/Foundation/Base64.h"
#include "Platform/Foundation/Data.h"
#include "Platform/Foundation/Date.h"
#include "Platform/Foundation/ISO8601.h"
#include "Platform/Foundation/Number.h"
#include "Platform/Foundation/String.h"
#include "Programs/Inspect/InspectionError.h"
#include "Programs/Json/PercentEncoding.h"

#include <algorithm>
#include <charconv>
#include <iterator>
#include <limits>
#include <optional>
#include <string>

namespace Inspection {

namespace {

using Contents = const NS::RefPtr<NS::Object>&;

NS::RefPtr<NS::Object> dataOf(Contents contents) {
    const auto text = NS::as<NS::String>(contents);
    auto bytes = text ? NS::base64Decoded(text->utf8()) : std::nullopt;
    return bytes ? NS::RefPtr<NS::Object>(NS::Data::dataWithVector(*std::move(bytes))) : nullptr;
}

std::optional<double> nonFinite(std::string_view name) {
    constexpr double kInfinity = std::numeric_limits<double>::infinity();
    if (name == "nan") {
        return std::numeric_limits<double>::quiet_NaN();
    }
    if (name == "inf" || name == "-inf") {
        return name == "inf" ? kInfinity : -kInfinity;
    }
    return std::nullopt;
}

std::optional<double> secondsOf(Contents contents) {
    if (const auto number = NS::as<NS::Number>(contents)) {
        return number->doubleValue();
    }
    const auto text = NS::as<NS::String>(contents);
    const std::string utf8 = text ? text->utf8() : "";
    const auto seconds = NS::secondsFromIso8601(utf8);
    return seconds ? seconds : nonFinite(utf8);
}

NS::RefPtr<NS::Object> dateOf(Contents contents) {
    const auto seconds = secondsOf(contents);
    return seconds ? NS::RefPtr<NS::Object>(NS::make<NS::Date>(*seconds)) : nullptr;
}

NS::RefPtr<NS::Object> bytesOf(Contents contents) {
    const auto text = NS::as<NS::String>(contents);
    const auto bytes = text ? percentDecoded(text->utf8()) : std::nullopt;
    return bytes ? NS::RefPtr<NS::Object>(NS::String::fromFileSystemRepresentation(*bytes))
                 : nullptr;
}

NS::RefPtr<NS::Object> utf16Of(Contents contents) {
    const auto text = NS::as<NS::String>(contents);
    const std::string digits = text ? text->utf8() : "?";
    std::u16string units;
    for (std::size_t i = 0; i < digits.size(); i += 4) {
        const char* const begin = digits.data() + i;
        const char* const end = begin + std::min<std::size_t>(4, digits.size() - i);
        std::uint16_t unit = 0;
        if (end - begin != 4 || std::from_chars(begin, end, unit, 16).ptr != end) {
            return nullptr;
        }
        units.push_back(unit);
    }
    return NS::String::fromUtf16(units);
}

NS::RefPtr<NS::Object> realOf(Contents contents) {
    const auto text = NS::as<NS::String>(contents);
    const auto real = text ? nonFinite(text->utf8()) : std::nullopt;
    return real ? NS::RefPtr<NS::Object>(NS::Number::numberWithDouble(*real)) : nullptr;
}

struct Form {
    std::string_view name;
    NS::RefPtr<NS::Object> (*value)(Contents contents); // nil for contents that it does not take
    const char* takes;
};

constexpr Form kForms[] = {
    {"$data",  &dataOf,  "bytes in base 64"                                              },
    {"$date",  &dateOf,  R"(a moment like "2026-11-16T06:56:27Z", or seconds since 2001)"},
    {"$bytes", &bytesOf, "a text with percent-encoded bytes"                             },
    {"$utf16", &utf16Of, "UTF-16 code units of four hexadecimal digits each"             },
    {"$real",  &realOf,  R"("inf", "-inf" or "nan")"                                     },
};

} // namespace

NS::Ref<NS::Object> valueOfForm(std::string_view name, Contents contents) {
    const auto* const form = std::ranges::find(kForms, name, &Form::name);
    if (form == std::end(kForms)) {
        throw Error("there is no form \"" + std::string(name) +
                    R"("; a key that begins with "$" is written with "$$")");
    }
    const auto value = form->value(contents);
    if (!value) {
        throw Error("\"" + std::string(name) + "\" takes " + form->takes);
    }
    return NS::Ref<NS::Object>(*value);
}

} // namespace Inspection
