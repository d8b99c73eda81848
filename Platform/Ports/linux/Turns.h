#pragma once

#include "Platform/Ports/PortLimits.h"

#include <algorithm>

namespace NS {

// How many messages a peer may have taken in one turn of the loop.
//
// To look for a further one that is not there costs a system call, which a peer that waits for each
// answer would pay for with every message; not to look costs one for each message of a peer that
// sends many. So the more often there was none, the fewer turns look: at most every sixteenth.
class Turns {
  public:
    // The most that this turn may take: one, when it is not to look for further ones.
    int beginTurn() noexcept {
        looks_ = waiting_ == 0;
        return looks_ ? PortLimits::kMessagesPerTurn : 1;
    }
    // Tells how many the turn has taken.
    void endTurn(int taken) noexcept {
        if (looks_) {
            pause_ = taken > 1 ? 0 : std::min(2 * pause_ + 1, kLongestPause);
            waiting_ = pause_;
        } else {
            --waiting_;
        }
    }

  private:
    static constexpr int kLongestPause = 15;

    int pause_ = 0;   // turns that do not look, after one that looked
    int waiting_ = 0; // those of them that are to come
    bool looks_ = true;
};

} // namespace NS
