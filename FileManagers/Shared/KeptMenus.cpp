#include "FileManagers/Shared/KeptMenus.h"

#include <algorithm>
#include <utility>

namespace FileManagers {

using Shell::MenuKind;

const Shell::Menu* KeptMenus::find(MenuKind kind, const Shell::Place& place,
                                   std::uint64_t generation, Clock::time_point now) {
    if (!bringToFront(kind, place)) {
        return nullptr;
    }
    const Kept& kept = kept_.front();
    const bool isEcho = kind == MenuKind::kToolbar && kept.isRepeated && now < kept.asked + echo_;
    return kept.generation == generation || isEcho ? &kept.menu : nullptr;
}

const Shell::Menu& KeptMenus::keep(MenuKind kind, const Shell::Place& place,
                                   std::uint64_t generation, Clock::time_point now,
                                   Shell::Menu menu) {
    if (bringToFront(kind, place)) {
        Kept& kept = kept_.front();
        kept.isRepeated = kept.menu == menu;
        kept.generation = generation;
        kept.asked = now;
        kept.menu = std::move(menu);
    } else {
        kept_.push_front({kind, place, generation, now, false, std::move(menu)});
        kept_.resize(std::min(kept_.size(), kMost));
    }
    return kept_.front().menu;
}

bool KeptMenus::bringToFront(MenuKind kind, const Shell::Place& place) {
    const auto found = std::ranges::find_if(
        kept_, [&](const Kept& kept) { return kept.kind == kind && kept.place == place; });
    if (found == kept_.end()) {
        return false;
    }
    kept_.splice(kept_.begin(), kept_, found);
    return true;
}

} // namespace FileManagers
