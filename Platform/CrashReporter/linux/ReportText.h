#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace NS {

// Writes a report's text into a file, with nothing but what a signal handler may use. What the file
// does not take is lost; the rest is tried all the same.
class ReportText {
  public:
    // Begins anew, in a file that stays the caller's.
    void begin(int file) noexcept { file_ = file, used_ = 0, written_ = 0; }

    // As it is, for texts of the report's own.
    ReportText& operator<<(std::string_view text) noexcept;
    // What comes from elsewhere: control characters become "\n", "\t", "\x1B", a backslash two, and
    // a zero byte ends it.
    ReportText& text(std::string_view text) noexcept;
    // The same, with blanks behind it up to a width in bytes.
    ReportText& column(std::string_view text, std::size_t width) noexcept;

    ReportText& decimal(std::int64_t number, std::size_t digits = 1) noexcept;
    // "0x" and sixteen digits.
    ReportText& address(std::uint64_t number) noexcept;
    // Two digits a byte, no prefix.
    ReportText& byte(std::uint8_t number) noexcept;

    // Hands over to the file what is still held back.
    void flush() noexcept;
    // How many bytes the file took.
    std::size_t written() const noexcept { return written_; }

  private:
    void put(char character) noexcept;
    std::size_t putEscaped(char character) noexcept;

    int file_ = -1;
    std::size_t used_ = 0;
    std::size_t written_ = 0;
    std::array<char, 4096> buffer_{};
};

} // namespace NS
