#pragma once

#include "Shell/Client/FinderClient.h"
#include "Shell/Client/GatheredPaths.h"

#include <optional>
#include <string>
#include <vector>

namespace Shell {

// What a place is to the extension: absolute paths, spelled as it spells them.
struct OfferedPlace {
    GatheredPaths items;
    std::string target; // empty for none
};

// The place as the extension is asked about it, or nothing when the menu of that kind is not
// offered there: the rules that FinderClient::isOffered() tells. A target that is in no watched
// folder is none. The items lie in the place, which outlives them.
std::optional<OfferedPlace> offeredPlace(const std::vector<std::string>& watchedFolders,
                                         MenuKind kind, const Place& place);
std::optional<OfferedPlace> offeredPlace(const std::vector<std::string>& watchedFolders,
                                         MenuKind kind, Place&& place) = delete;

} // namespace Shell
