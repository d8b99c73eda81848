#pragma once

#include "Shell/Client/FinderClient.h"

#include <cstddef>
#include <cstdint>
#include <list>

namespace FileManagers {

// The last menus that were asked for, since file managers want the entries of a selection again and
// again.
class KeptMenus {
  public:
    static constexpr std::size_t kMostSelections = 4; // one can hold megabytes of paths
    static constexpr std::size_t kMostFolders = 32;   // of windows that are all built anew at once

    // The menu of a place, when it need not be asked for since its generation lasts; null
    // otherwise. Valid until another is kept.
    const Shell::Menu* find(Shell::MenuKind kind, const Shell::Place& place,
                            std::uint64_t generation);

    // Keeps what was asked for, in the generation that there was when it was asked.
    const Shell::Menu& keep(Shell::MenuKind kind, const Shell::Place& place,
                            std::uint64_t generation, Shell::Menu menu);

  private:
    struct Kept {
        Shell::MenuKind kind;
        Shell::Place place;
        std::uint64_t generation;
        Shell::Menu menu;
    };
    using KeptList = std::list<Kept>; // what was used last first

    KeptList& keptLike(const Shell::Place& place) noexcept;
    // Moves what is kept for a place to the front; false when there is nothing.
    static bool bringToFront(KeptList& kept, Shell::MenuKind kind, const Shell::Place& place);

    KeptList selections_;
    KeptList folders_;
};

} // namespace FileManagers
