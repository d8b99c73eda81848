#include "Programs/Inspect/JsonOutput.h"

#include "Programs/Inspect/InspectionError.h"

#include <algorithm>
#include <iterator>
#include <string>

namespace Inspection {

namespace {

// Deeper levels stand below each other: a value could otherwise be made of indentation alone.
constexpr std::size_t kDeepestIndentation = 40;

struct Escape {
    char character;
    std::string_view json;
};

constexpr Escape kEscapes[] = {
    {'"',  "\\\""},
    {'\\', "\\\\"},
    {'\n', "\\n" },
    {'\r', "\\r" },
    {'\t', "\\t" },
};

std::string escaped(char character) {
    const auto* const row = std::ranges::find(kEscapes, character, &Escape::character);
    if (row != std::end(kEscapes)) {
        return std::string(row->json);
    }
    constexpr std::string_view kDigits = "0123456789abcdef";
    const auto byte = static_cast<unsigned char>(character);
    return std::string("\\u00") + kDigits[byte >> 4U] + kDigits[byte & 0xFU];
}

bool standsForItself(char character) noexcept {
    return static_cast<unsigned char>(character) >= 0x20 && character != '"' && character != '\\';
}

} // namespace

void JsonOutput::key(std::string_view utf8) {
    beginValue();
    putText(utf8);
    put(": ");
    followsKey_ = true;
}

void JsonOutput::text(std::string_view utf8) {
    beginValue();
    putText(utf8);
}

void JsonOutput::literal(std::string_view json) {
    beginValue();
    put(json);
}

void JsonOutput::textForm(std::string_view key, std::string_view utf8) {
    beginValue();
    put("{");
    putText(key);
    put(": ");
    putText(utf8);
    put("}");
}

void JsonOutput::literalForm(std::string_view key, std::string_view json) {
    beginValue();
    put("{");
    putText(key);
    put(": ");
    put(json);
    put("}");
}

void JsonOutput::begin(char bracket) {
    beginValue();
    put({&bracket, 1});
    hasMembers_.push_back(false);
}

void JsonOutput::end(char bracket) {
    const bool wasEmpty = !hasMembers_.back();
    hasMembers_.pop_back();
    if (!wasEmpty) {
        newLine();
    }
    put({&bracket, 1});
}

// Whatever separates the value, or the key, from what stands before it.
void JsonOutput::beginValue() {
    if (followsKey_ || hasMembers_.empty()) {
        followsKey_ = false;
        return;
    }
    put(hasMembers_.back() ? "," : "");
    hasMembers_.back() = true;
    newLine();
}

void JsonOutput::newLine() {
    put("\n");
    put(std::string(2 * std::min(hasMembers_.size(), kDeepestIndentation), ' '));
}

void JsonOutput::put(std::string_view bytes) {
    written_ += bytes.size();
    if (written_ > limit_) {
        throw Error("what it refers to again and again comes to more than " +
                    std::to_string(limit_ >> 20U) + " MiB");
    }
    out_.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
}

void JsonOutput::putText(std::string_view utf8) {
    put("\"");
    while (!utf8.empty()) {
        const auto plain = static_cast<std::size_t>(
            std::ranges::find_if_not(utf8, standsForItself) - utf8.begin());
        put(utf8.substr(0, plain));
        utf8.remove_prefix(plain);
        if (!utf8.empty()) {
            put(escaped(utf8.front()));
            utf8.remove_prefix(1);
        }
    }
    put("\"");
}

} // namespace Inspection
