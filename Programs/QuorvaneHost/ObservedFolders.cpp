#include "Programs/QuorvaneHost/ObservedFolders.h"

bool ObservedFolders::begin(const std::string& client, const std::string& folder) {
    auto& shown = folders_[client];
    if (shown.size() >= kMostFolders) {
        return false;
    }
    shown.insert(folder);
    return true;
}

bool ObservedFolders::end(const std::string& client, const std::string& folder) {
    const auto shown = folders_.find(client);
    if (shown == folders_.end()) {
        return false;
    }
    const auto found = shown->second.find(folder);
    if (found == shown->second.end()) {
        return false;
    }
    shown->second.erase(found);
    return true;
}

std::vector<std::string> ObservedFolders::foldersOf(const std::string& client) const {
    const auto shown = folders_.find(client);
    return shown == folders_.end()
               ? std::vector<std::string>()
               : std::vector<std::string>(shown->second.begin(), shown->second.end());
}
