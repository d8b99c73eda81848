#include "Platform/Foundation/Base64.h"

#include <array>
#include <cstdint>

namespace NS {

namespace {

constexpr std::string_view kLetters =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

constexpr std::uint8_t kNoLetter = 0xFF;
constexpr std::uint8_t kWhiteSpace = 0xFE;

consteval std::array<std::uint8_t, 256> valuesOfCharacters() {
    std::array<std::uint8_t, 256> values{};
    values.fill(kNoLetter);
    for (std::size_t i = 0; i < kLetters.size(); ++i) {
        values[static_cast<unsigned char>(kLetters[i])] = static_cast<std::uint8_t>(i);
    }
    for (const char c : {' ', '\t', '\n', '\r'}) {
        values[static_cast<unsigned char>(c)] = kWhiteSpace;
    }
    return values;
}

constexpr auto kValues = valuesOfCharacters();

} // namespace

std::string base64Encoded(Bytes bytes) {
    std::string text;
    text.reserve((bytes.size() + 2) / 3 * 4);
    for (std::size_t i = 0; i < bytes.size(); i += 3) {
        std::uint32_t group = 0;
        for (std::size_t k = i; k < i + 3; ++k) {
            group = group << 8U | (k < bytes.size() ? std::to_integer<unsigned>(bytes[k]) : 0U);
        }
        const std::size_t letters = bytes.size() - i < 3 ? bytes.size() - i + 1 : 4;
        for (std::size_t k = 0; k < 4; ++k) {
            text.push_back(k < letters ? kLetters[group >> (18U - 6U * k) & 0x3FU] : '=');
        }
    }
    return text;
}

std::optional<std::vector<std::byte>> base64Decoded(std::string_view text) {
    std::vector<std::byte> bytes;
    bytes.reserve(text.size() / 4 * 3);
    std::uint32_t bits = 0;
    unsigned count = 0; // of bits that are yet to become bytes
    std::size_t letters = 0;
    std::size_t padding = 0;
    for (const char c : text) {
        const std::uint8_t value = kValues[static_cast<unsigned char>(c)];
        if (value == kWhiteSpace) {
            continue;
        }
        padding += c == '=' ? 1U : 0U;
        if (c == '=') {
            continue;
        }
        if (value == kNoLetter || padding != 0) {
            return std::nullopt;
        }
        ++letters;
        bits = (bits << 6U | value) & 0xFFFFU;
        count += 6;
        if (count >= 8) {
            count -= 8;
            bytes.push_back(static_cast<std::byte>(bits >> count));
        }
    }
    const bool isWhole = (letters + padding) % 4 == 0 && padding <= 2;
    return isWhole ? std::optional(std::move(bytes)) : std::nullopt;
}

} // namespace NS
