#include "FileManagers/Shared/KeptMenus.h"

#include <algorithm>
#include <utility>

namespace FileManagers {

using Shell::MenuKind;

const Shell::Menu* KeptMenus::find(MenuKind kind, const Shell::Place& place,
                                   std::uint64_t generation) {
    KeptList& kept = keptLike(place);
    return bringToFront(kept, kind, place) && kept.front().generation == generation
               ? &kept.front().menu
               : nullptr;
}

const Shell::Menu& KeptMenus::keep(MenuKind kind, const Shell::Place& place,
                                   std::uint64_t generation, Shell::Menu menu) {
    KeptList& kept = keptLike(place);
    if (bringToFront(kept, kind, place)) {
        kept.front().generation = generation;
        kept.front().menu = std::move(menu);
    } else {
        kept.push_front({kind, place, generation, std::move(menu)});
        const std::size_t most = &kept == &folders_ ? kMostFolders : kMostSelections;
        kept.resize(std::min(kept.size(), most));
    }
    return kept.front().menu;
}

KeptMenus::KeptList& KeptMenus::keptLike(const Shell::Place& place) noexcept {
    return place.items.empty() ? folders_ : selections_;
}

bool KeptMenus::bringToFront(KeptList& kept, MenuKind kind, const Shell::Place& place) {
    const auto found = std::ranges::find_if(
        kept, [&](const Kept& each) { return each.kind == kind && each.place == place; });
    if (found == kept.end()) {
        return false;
    }
    kept.splice(kept.begin(), kept, found);
    return true;
}

} // namespace FileManagers
