#pragma once

#include "Platform/Ports/PortLimits.h"
#include "Platform/Ports/linux/Looks.h"

namespace NS {

// How many messages a peer may have taken in one turn of the loop: many, where a turn looks for
// further ones. A peer that waits for each answer would pay for each look with every message.
class Turns {
  public:
    // The most that this turn may take: one, when it is not to look for further ones.
    int beginTurn() const noexcept { return looks_.isDue() ? PortLimits::kMessagesPerTurn : 1; }
    // Tells how many the turn has taken of the most that it might. Turns can stand within one
    // another, as a handler may run the loop.
    void endTurn(int most, int taken) noexcept {
        if (most > 1) {
            looks_.looked(taken > 1);
        } else {
            looks_.passed();
        }
    }

  private:
    Looks looks_;
};

} // namespace NS
