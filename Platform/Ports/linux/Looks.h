#pragma once

#include <algorithm>

namespace NS {

// On which of many occasions to look for something that may not be there.
//
// A look in vain costs a system call; where there is something, not to look costs one as well. So
// the more often there was nothing, the fewer occasions are taken: at most every sixteenth.
class Looks {
  public:
    // Whether to look on this occasion, of which one of these two is to hear then.
    bool isDue() const noexcept { return waiting_ == 0; }
    void looked(bool hasFound) noexcept {
        pause_ = hasFound ? 0 : std::min(2 * pause_ + 1, kLongestPause);
        waiting_ = pause_;
    }
    void passed() noexcept { waiting_ = std::max(waiting_ - 1, 0); }

  private:
    static constexpr int kLongestPause = 15;

    int pause_ = 0;   // occasions that are not taken, after one that was
    int waiting_ = 0; // those of them that are to come
};

} // namespace NS
