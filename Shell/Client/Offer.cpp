#include "Shell/Client/Offer.h"

#include "Shell/Client/WatchedFolders.h"

#include <utility>

namespace Shell {

namespace {

using Where = Placing::Where;

// What the extension could not make the menu of, or would take for something else.
bool isHarmful(Where where) {
    return where == Where::kWatched || where == Where::kBeside || where == Where::kNowhere;
}

struct Seen {
    OfferedPlace place; // without harmful items
    bool hasHarmfulItem = false;
    bool hasItemInside = false;
};

// With a NUL behind each.
std::size_t lengthOf(const std::vector<std::string>& paths) {
    std::size_t length = 0;
    for (const std::string& path : paths) {
        length += path.size() + 1;
    }
    return length;
}

Seen look(const std::vector<std::string>& watchedFolders, const Place& place) {
    WatchedFolders watched(watchedFolders);
    Seen seen;
    seen.place.items.reserve(lengthOf(place.items));
    for (const std::string& item : place.items) {
        const std::size_t length = seen.place.items.size();
        const Where where = watched.appendItem(item, seen.place.items);
        if (isHarmful(where)) {
            seen.hasHarmfulItem = true;
            seen.place.items.resize(length);
            continue;
        }
        seen.hasItemInside = seen.hasItemInside || where == Where::kInside;
        seen.place.items.push_back('\0');
    }
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
