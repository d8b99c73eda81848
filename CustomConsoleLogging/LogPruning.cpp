#include "CustomConsoleLogging/consoleLogging.h"
#include "Platform/Foundation/Array.h"
#include "Platform/Foundation/FileManager.h"
#include "Platform/Foundation/SearchPaths.h"

#include <algorithm>
#include <numeric>
#include <vector>

namespace {

constexpr std::int32_t kOwnEntries = 18;
constexpr std::int32_t kExtensionEntries = 2;

// The extension's logging folder as a process outside of its container sees it.
constexpr std::string_view kExtensionLogs =
    "Library/Containers/com.Quorvane.Quorvane.QVFinderExtension/Data/Library/Application Support/"
    "Quorvane/LogDirectory";

NS::Ref<NS::String> entryPath(const NS::String& folder, const NS::Object& name) {
    return folder.stringByAppendingPathComponent(*NS::as<NS::String>(&name));
}

// The creation dates of a folder's entries, in the order of their names. An entry without one
// raises, as putting nothing into an array does, and so ends the pass; the test
// LeavesThePassAtAnEntryWithoutACreationDate holds it.
NS::Ref<NS::Array> creationDates(const NS::String& folder, const NS::Array& names) {
    const auto dates = NS::make<NS::MutableArray>();
    for (const NS::Ref<NS::Object>& name : names) {
        const auto attributes =
            NS::FileManager::defaultManager().attributesOfItemAtPath(*entryPath(folder, *name));
        dates->addObject(attributes ? attributes->creationDate : nullptr);
    }
    return dates;
}

// Positions in the listing, newest first; equal dates stay in the listing's order.
std::vector<std::size_t> newestFirst(const NS::Array& dates) {
    std::vector<std::size_t> positions(dates.count());
    std::iota(positions.begin(), positions.end(), std::size_t{0});
    std::ranges::stable_sort(positions, [&](std::size_t a, std::size_t b) {
        const auto first = NS::cast<NS::Date>(dates.objectAtIndex(a));
        const auto second = NS::cast<NS::Date>(dates.objectAtIndex(b));
        return second->compare(*first) < 0;
    });
    return positions;
}

} // namespace

void QVLogging::cleanup() {
    cleanupLogsFolder_maxItems(*path(), kOwnEntries);
    cleanupLogsFolder_maxItems(
        *NS::homeDirectory()->stringByAppendingPathComponent(*NS::str(kExtensionLogs)),
        kExtensionEntries);
}

void QVLogging::cleanupLogsFolder_maxItems(const NS::String& folder, std::int32_t maxItems) {
    NS::FileManager& files = NS::FileManager::defaultManager();
    const NS::RefPtr<NS::Array> names = files.contentsOfDirectoryAtPath(folder);
    if (!names) {
        return;
    }
    const std::vector<std::size_t> positions = newestFirst(*creationDates(folder, *names));
    // Widened with its sign and then compared without one: a negative limit is beyond every count.
    const auto kept = static_cast<std::size_t>(static_cast<std::int64_t>(maxItems));
    for (std::size_t i = kept; i < positions.size(); ++i) {
        (void)files.removeItemAtPath(*entryPath(folder, names->objectAtIndex(positions[i])));
    }
}
