#pragma once

#include "Platform/Foundation/BinaryPropertyListReader.h"
#include "Platform/Foundation/Data.h"

#include <cstdio>
#include <string>

namespace Tests {

// A property list on one line, for tests to compare: texts in quotes (u"…" has UTF-16 code units),
// data in angle brackets, dates as @seconds, UIDs as #n, dictionaries in their own order.
class ListText {
  public:
    explicit ListText(const NS::BinaryPropertyListReader& list) : list_(list) {}

    std::string of(std::uint64_t number) const {
        using Kind = NS::BinaryPropertyListReader::Kind;
        const auto item = list_.item(number);
        switch (item.kind) {
        case Kind::kBoolean:
            return item.bits != 0 ? "true" : "false";
        case Kind::kInteger:
            return std::to_string(static_cast<std::int64_t>(item.bits));
        case Kind::kFloat:
        case Kind::kReal:
            return formatted("%g", item.real);
        case Kind::kAscii:
            return '"' + std::string(NS::charactersOf(item.bytes())) + '"';
        case Kind::kUtf16:
            return "u\"" + hex({item.body, item.count * 2}) + '"';
        case Kind::kDate:
            return '@' + formatted("%g", item.real);
        case Kind::kData:
            return '<' + hex(item.bytes()) + '>';
        case Kind::kUid:
            return '#' + std::to_string(item.bits);
        case Kind::kArray:
            return '[' + elements(item) + ']';
        case Kind::kDictionary:
            return '{' + entries(item) + '}';
        default:
            return "?";
        }
    }

  private:
    static std::string formatted(const char* format, double value) {
        char buffer[64];
        return {buffer,
                static_cast<std::size_t>(std::snprintf(buffer, sizeof buffer, format, value))};
    }
    static std::string hex(NS::Bytes bytes) {
        std::string text;
        for (const std::byte byte : bytes) {
            char digits[3];
            (void)std::snprintf(digits, sizeof digits, "%02x", std::to_integer<unsigned>(byte));
            text += digits;
        }
        return text;
    }
    std::string elements(const NS::BinaryPropertyListReader::Item& array) const {
        std::string text;
        for (std::uint64_t i = 0; i < array.count; ++i) {
            text += (i == 0 ? "" : ", ") + of(list_.reference(array, i));
        }
        return text;
    }
    std::string entries(const NS::BinaryPropertyListReader::Item& dictionary) const {
        std::string text;
        for (std::uint64_t i = 0; i < dictionary.count; ++i) {
            const auto key = list_.element(dictionary, i);
            text += (i == 0 ? "" : ", ") + std::string(NS::charactersOf(key.bytes())) + '=' +
                    of(list_.reference(dictionary, dictionary.count + i));
        }
        return text;
    }

    const NS::BinaryPropertyListReader& list_;
};

inline std::string textOfList(const NS::Data& data) {
    const char* reason = nullptr;
    const auto list = NS::BinaryPropertyListReader::open(data.bytes(), reason);
    return list ? ListText(*list).of(list->topObject()) : reason;
}

} // namespace Tests
