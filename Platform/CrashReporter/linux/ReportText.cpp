#include "Platform/CrashReporter/linux/ReportText.h"

#include <algorithm>
#include <cerrno>
#include <unistd.h>

namespace NS {

namespace {

constexpr std::string_view kDigits = "0123456789abcdef";
// Of 64 bits in decimal.
constexpr std::size_t kMostDigits = 20;

} // namespace

void ReportText::put(char character) noexcept {
    if (used_ == buffer_.size()) {
        flush();
    }
    buffer_[used_++] = character;
}

std::size_t ReportText::putEscaped(char character) noexcept {
    const auto code = static_cast<std::uint8_t>(character);
    if (code >= 0x20 && code != 0x7F && character != '\\') {
        put(character);
        return 1;
    }
    put('\\');
    switch (character) {
    case '\\':
        put('\\');
        return 2;
    case '\n':
        put('n');
        return 2;
    case '\t':
        put('t');
        return 2;
    default:
        put('x');
        byte(code);
        return 4;
    }
}

ReportText& ReportText::operator<<(std::string_view text) noexcept {
    for (const char character : text) {
        put(character);
    }
    return *this;
}

ReportText& ReportText::text(std::string_view text) noexcept {
    return column(text, 0);
}

ReportText& ReportText::column(std::string_view text, std::size_t width) noexcept {
    std::size_t length = 0;
    for (const char character : text) {
        if (character == '\0') {
            break;
        }
        length += putEscaped(character);
    }
    for (; length < width; ++length) {
        put(' ');
    }
    return *this;
}

ReportText& ReportText::decimal(std::int64_t number, std::size_t digits) noexcept {
    std::array<char, kMostDigits> reversed{};
    // Not of the number itself: the lowest has no opposite.
    auto rest = static_cast<std::uint64_t>(number);
    if (number < 0) {
        put('-');
        rest = ~rest + 1;
    }
    std::size_t length = 0;
    for (; rest != 0; rest /= 10) {
        reversed[length++] = kDigits[rest % 10];
    }
    for (; length < std::min(digits, kMostDigits); ++length) {
        reversed[length] = '0';
    }
    while (length > 0) {
        put(reversed[--length]);
    }
    return *this;
}

ReportText& ReportText::address(std::uint64_t number) noexcept {
    *this << "0x";
    for (unsigned shift = 64; shift > 0; shift -= 8) {
        byte(static_cast<std::uint8_t>(number >> (shift - 8)));
    }
    return *this;
}

ReportText& ReportText::byte(std::uint8_t number) noexcept {
    put(kDigits[number >> 4U]);
    put(kDigits[number & 0xFU]);
    return *this;
}

void ReportText::flush() noexcept {
    std::size_t done = 0;
    while (done < used_) {
        const ssize_t count = ::write(file_, buffer_.data() + done, used_ - done);
        if (count < 0 && errno == EINTR) {
            continue;
        }
        if (count <= 0) {
            break;
        }
        done += static_cast<std::size_t>(count);
    }
    written_ += done;
    used_ = 0;
}

} // namespace NS
