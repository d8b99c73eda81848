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
    int beginTurn() const noexcept { return waiting_ == 0 ? PortLimits::kMessagesPerTurn : 1; }
    // Tells how many the turn has taken of the most that it might. Turns can stand within one
    // another, as a handler may run the loop.
    void endTurn(int most, int taken) noexcept {
        if (most > 1) {
            pause_ = taken > 1 ? 0 : std::min(2 * pause_ + 1, kLongestPause);
            waiting_ = pause_;
        } else {
            waiting_ = std::max(waiting_ - 1, 0);
        }
    }

  private:
    static constexpr int kLongestPause = 15;

    int pause_ = 0;   // turns that do not look, after one that looked
    int waiting_ = 0; // those of them that are to come
};

} // namespace NS
