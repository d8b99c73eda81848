#include "Shell/Client/Offer.h"

#include "Shell/Client/WatchedFolders.h"

#include <utility>

namespace Shell {

namespace {

using Where = Placing::Where;

struct Seen {
    OfferedPlace place; // without harmful items
    bool hasHarmfulItem = false;
    bool hasItemInside = false;
};

void addItems(Seen& seen, WatchedFolders& watched, const std::vector<std::string>& items) {
    seen.place.items.reserve(items.size());
    for (const std::string& item : items) {
        if (watched.addBesideLast(item, seen.place.items)) {
            continue;
        }
        const Where where = watched.addItem(item, seen.place.items);
        seen.hasHarmfulItem = seen.hasHarmfulItem || Placing::isHarmful(where);
        seen.hasItemInside = seen.hasItemInside || where == Where::kInside;
    }
}

Seen look(const std::vector<std::string>& watchedFolders, const Place& place) {
    WatchedFolders watched(watchedFolders);
    Seen seen;
    addItems(seen, watched, place.items);
    if (Placing target = watched.placeFolder(place.target); target.isOnDrive()) {
        seen.place.target = std::move(target.path);
    }
    return seen;
}

bool isOffered(MenuKind kind, const Seen& seen) {
    switch (kind) {
    case MenuKind::kToolbar:
        return true;
    case MenuKind::kContainer:
        return !seen.hasHarmfulItem && !seen.place.target.empty();
    default:
        return !seen.hasHarmfulItem && seen.hasItemInside;
    }
}

} // namespace

std::optional<OfferedPlace> offeredPlace(const std::vector<std::string>& watchedFolders,
                                         MenuKind kind, const Place& place) {
    Seen seen = look(watchedFolders, place);
    if (!isOffered(kind, seen)) {
        return std::nullopt;
    }
    return std::move(seen.place);
}

} // namespace Shell
