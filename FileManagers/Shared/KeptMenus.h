#pragma once

#include "Shell/Client/FinderClient.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <list>

namespace FileManagers {

// The last menus that were asked for, since file managers want the entries of a selection again and
// again.
class KeptMenus {
  public:
    using Clock = std::chrono::steady_clock;
    static constexpr std::size_t kMost = 4; // a selection can hold megabytes of paths

    // For how long the toolbar's menu is good although there is a new generation.
    explicit KeptMenus(Clock::duration echo) noexcept : echo_(echo) {}

    // The menu of a place, when it need not be asked for; null otherwise. Valid until another is
    // kept.
    //
    // It need not while its generation lasts. Of the toolbar's menu the asking itself can bring a
    // new generation, after which a file manager that shows it builds its entries anew: so that
    // this has an end, the menu that was the same twice is good for a moment longer.
    const Shell::Menu* find(Shell::MenuKind kind, const Shell::Place& place,
                            std::uint64_t generation, Clock::time_point now);

    // Keeps what was asked for, in the generation that there was when it was asked.
    const Shell::Menu& keep(Shell::MenuKind kind, const Shell::Place& place,
                            std::uint64_t generation, Clock::time_point now, Shell::Menu menu);

  private:
    struct Kept {
        Shell::MenuKind kind;
        Shell::Place place;
        std::uint64_t generation;
        Clock::time_point asked;
        bool isRepeated; // the same menu as when it was asked for before
        Shell::Menu menu;
    };

    // Moves what is kept for a place to the front; false when there is nothing.
    bool bringToFront(Shell::MenuKind kind, const Shell::Place& place);

    Clock::duration echo_;
    std::list<Kept> kept_; // what was used last first
};

} // namespace FileManagers
