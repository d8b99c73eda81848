#include "Shell/ObservedFolders.h"

#include <utility>

namespace Shell {

bool ObservedFolders::begin(const std::string& caller, const NS::Ref<NS::URL>& folder) {
    const Path path = folder->path()->fileSystemRepresentation();
    if (path.size() > kLongestPath) {
        return false;
    }
    Begins& begins = beginsOfCallers_[caller];
    if (begins.size() == kFoldersPerCaller && !begins.contains(path)) {
        return false;
    }
    if (++begins[path] > 1) {
        return true;
    }
    const auto [observation, isFirst] = observations_.try_emplace(path, Observation{folder, 0});
    ++observation->second.callers;
    if (isFirst) {
        extension_->beginObservingDirectoryAtURL(folder);
    }
    return true;
}

bool ObservedFolders::end(const std::string& caller, const NS::Ref<NS::URL>& folder) {
    const auto begins = beginsOfCallers_.find(caller);
    if (begins == beginsOfCallers_.end()) {
        return false;
    }
    const auto count = begins->second.find(folder->path()->fileSystemRepresentation());
    if (count == begins->second.end()) {
        return false;
    }
    if (--count->second > 0) {
        return true;
    }
    const Path path = count->first;
    begins->second.erase(count);
    if (begins->second.empty()) {
        beginsOfCallers_.erase(begins);
    }
    forget(path);
    return true;
}

void ObservedFolders::callerGone(const std::string& caller) {
    const auto begins = beginsOfCallers_.extract(caller);
    if (begins.empty()) {
        return;
    }
    for (const auto& [path, count] : begins.mapped()) {
        forget(path);
    }
}

void ObservedFolders::allCallersGone() {
    while (!beginsOfCallers_.empty()) {
        callerGone(beginsOfCallers_.begin()->first);
    }
}

// One caller fewer has the folder.
void ObservedFolders::forget(const Path& path) {
    const auto observation = observations_.find(path);
    if (--observation->second.callers > 0) {
        return;
    }
    const NS::Ref<NS::URL> url = observation->second.url;
    observations_.erase(observation);
    extension_->endObservingDirectoryAtURL(url);
}

} // namespace Shell
