#include "Programs/Inspect/PlainValueJson.h"

#include "Platform/Foundation/Base64.h"
#include "Platform/Foundation/Data.h"
#include "Platform/Foundation/Date.h"
#include "Platform/Foundation/ISO8601.h"
#include "Platform/Foundation/Null.h"
#include "Platform/Foundation/Number.h"
#include "Programs/Json/PercentEncoding.h"

#include <nlohmann/json.hpp>

#include <cmath>

namespace Inspection {

namespace {

// The code units, four hexadecimal digits each.
std::string hexOf(const NS::String& text) {
    constexpr std::string_view kDigits = "0123456789abcdef";
    std::string digits;
    for (const char16_t unit : text.utf16()) {
        for (unsigned shift = 16; shift > 0; shift -= 4) {
            digits.push_back(kDigits[unit >> (shift - 4) & 0xFU]);
        }
    }
    return digits;
}

// A text that is not valid Unicode is most often a file name that is not UTF-8.
void writeText(JsonOutput& out, const NS::String& text) {
    if (const auto utf8 = utf8Of(text)) {
        return out.text(*utf8);
    }
    const std::string bytes = text.fileSystemRepresentation();
    if (NS::String::fromFileSystemRepresentation(bytes)->isEqualToString(text)) {
        return out.textForm("$bytes", percentEncoded(bytes));
    }
    out.textForm("$utf16", hexOf(text));
}

const char* nameOfNonFinite(double real) noexcept {
    return std::isnan(real) ? "nan" : (real > 0 ? "inf" : "-inf");
}

// The shortest digits that give the number back, always with a point or an exponent.
std::string digitsOf(double real) {
    return nlohmann::json(real).dump();
}

void writeNumber(JsonOutput& out, const NS::Number& number) {
    switch (number.type()) {
    case NS::Number::Type::kBoolean:
        return out.literal(number.boolValue() ? "true" : "false");
    case NS::Number::Type::kInteger:
        return out.literal(std::to_string(number.longLongValue()));
    case NS::Number::Type::kUnsigned:
        return out.literal(std::to_string(number.unsignedLongLongValue()));
    default:
        break;
    }
    const double real = number.doubleValue();
    if (std::isfinite(real)) {
        out.literal(digitsOf(real));
    } else {
        out.textForm("$real", nameOfNonFinite(real));
    }
}

// A moment that ISO 8601 has no text for is told in seconds since 2001.
void writeDate(JsonOutput& out, double seconds) {
    if (const auto text = NS::iso8601FromSeconds(seconds)) {
        out.textForm("$date", *text);
    } else if (std::isfinite(seconds)) {
        out.literalForm("$date", digitsOf(seconds));
    } else {
        out.textForm("$date", nameOfNonFinite(seconds));
    }
}

} // namespace

bool writePlainValue(JsonOutput& out, const NS::Object& object) {
    if (const auto* const text = NS::as<NS::String>(&object)) {
        writeText(out, *text);
    } else if (const auto* const number = NS::as<NS::Number>(&object)) {
        writeNumber(out, *number);
    } else if (const auto* const date = NS::as<NS::Date>(&object)) {
        writeDate(out, date->timeIntervalSinceReferenceDate());
    } else if (const auto* const data = NS::as<NS::Data>(&object)) {
        out.textForm("$data", NS::base64Encoded(data->bytes()));
    } else if (NS::as<NS::Null>(&object) != nullptr) {
        out.literal("null");
    } else {
        return false;
    }
    return true;
}

void writeNil(JsonOutput& out) {
    out.literalForm("$nil", "true");
}

void writeReference(JsonOutput& out, std::uint32_t number) {
    out.literalForm("$ref", std::to_string(number));
}

std::optional<std::string> utf8Of(const NS::String& text) {
    std::string bytes = text.fileSystemRepresentation();
    const auto back = NS::String::fromUtf8(bytes);
    return back && back->isEqualToString(text) ? std::optional(std::move(bytes)) : std::nullopt;
}

void writeKey(JsonOutput& out, std::string_view utf8) {
    if (utf8.starts_with('$')) {
        out.key('$' + std::string(utf8));
    } else {
        out.key(utf8);
    }
}

} // namespace Inspection
