#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstring>
#include <string_view>

namespace NS {

// A short text in fixed storage, always ended by a zero byte; what finds no room is cut off. Safe
// in a signal handler.
template <std::size_t kSize>
class FixedText {
  public:
    FixedText& operator<<(std::string_view text) noexcept {
        const std::size_t count = std::min(text.size(), kSize - 1 - length_);
        // Not memcpy(): optimising, g++ 12 believes that two texts side by side overlap.
        std::memmove(bytes_.data() + length_, text.data(), count);
        length_ += count;
        bytes_[length_] = '\0';
        return *this;
    }
    // With zeros in front of it, up to so many digits.
    FixedText& decimal(unsigned number, unsigned digits = 1) noexcept {
        if (number >= 10 || digits > 1) {
            decimal(number / 10, digits - std::min(digits, 1U));
        }
        const char last = static_cast<char>('0' + number % 10);
        return *this << std::string_view(&last, 1);
    }
    void clear() noexcept { length_ = 0, bytes_[0] = '\0'; }

    const char* c_str() const noexcept { return bytes_.data(); }
    std::string_view view() const noexcept { return {bytes_.data(), length_}; }

  private:
    std::size_t length_ = 0;
    std::array<char, kSize> bytes_{};
};

} // namespace NS
