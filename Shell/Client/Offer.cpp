#include "Shell/Client/Offer.h"

#include "Shell/Client/FileURLText.h"
#include "Shell/Client/WatchedFolders.h"

namespace Shell {

namespace {

using Where = Placing::Where;

// What the extension could not make the menu of, or would take for something else.
bool isHarmful(Where where) {
    return where == Where::kWatched || where == Where::kBeside || where == Where::kNowhere;
}

struct Seen {
    PlaceURLs urls; // without harmful items
    bool hasHarmfulItem = false;
    bool hasItemInside = false;
};

Seen look(const std::vector<std::string>& watchedFolders, const Place& place) {
    WatchedFolders watched(watchedFolders);
    Seen seen;
    seen.urls.items.reserve(place.items.size());
    for (const std::string& item : place.items) {
        const Placing placing = watched.placeItem(item);
        if (isHarmful(placing.where)) {
            seen.hasHarmfulItem = true;
            continue;
        }
        seen.hasItemInside = seen.hasItemInside || placing.where == Where::kInside;
        seen.urls.items.push_back(fileURLOf(placing.path));
    }
    if (const Placing target = watched.placeFolder(place.target); target.isOnDrive()) {
        seen.urls.target = fileURLOf(target.path);
    }
    return seen;
}

bool isOffered(MenuKind kind, const Seen& seen) {
    switch (kind) {
    case MenuKind::kToolbar:
        return true;
    case MenuKind::kContainer:
        return !seen.hasHarmfulItem && !seen.urls.target.empty();
    default:
        return !seen.hasHarmfulItem && seen.hasItemInside;
    }
}

} // namespace

std::optional<PlaceURLs> offeredPlace(const std::vector<std::string>& watchedFolders, MenuKind kind,
                                      const Place& place) {
    Seen seen = look(watchedFolders, place);
    if (!isOffered(kind, seen)) {
        return std::nullopt;
    }
    return std::move(seen.urls);
}

} // namespace Shell
