#include "CustomConsoleLogging/LoggingFolders.h"
#include "CustomConsoleLogging/QVLogging.h"
#include "Platform/Foundation/Array.h"
#include "Platform/Foundation/FileManager.h"

#include <algorithm>
#include <numeric>
#include <vector>

namespace {

constexpr std::int32_t kOwnEntries = 18;
constexpr std::int32_t kExtensionEntries = 2;

NS::Ref<NS::String> entryPath(const NS::String& folder, const NS::Ref<NS::Object>& name) {
    return folder.stringByAppendingPathComponent(*NS::cast<NS::String>(name));
}

// The entries' creation dates, in the order of the names. An entry without one is not passed over:
// its nil raises. QVLoggingPruning.IsLeftByAnEntryWithoutACreationDate holds it.
NS::Ref<NS::Array> creationDates(const NS::String& folder, const NS::Array& names) {
    NS::FileManager& files = NS::FileManager::defaultManager();
    const auto dates = NS::make<NS::MutableArray>();
    for (const NS::Ref<NS::Object>& name : names) {
        const auto attributes = files.attributesOfItemAtPath(*entryPath(folder, name));
        dates->addObject(attributes ? attributes->creationDate : nullptr);
    }
    return dates;
}

// Positions in the listing, newest first; entries of the same date stay in the listing's order.
std::vector<std::size_t> newestFirst(const NS::Array& dates) {
    const auto dateAt = [&](std::size_t position) {
        return NS::cast<NS::Date>(dates.objectAtIndex(position));
    };
    std::vector<std::size_t> positions(dates.count());
    std::iota(positions.begin(), positions.end(), std::size_t{0});
    std::ranges::stable_sort(positions, [&](std::size_t a, std::size_t b) {
        return dateAt(b)->compare(*dateAt(a)) < 0;
    });
    return positions;
}

} // namespace

void QVLogging::cleanup() {
    cleanupLogsFolder_maxItems(path(), kOwnEntries);
    cleanupLogsFolder_maxItems(containedLoggingFolder(), kExtensionEntries);
}

void QVLogging::cleanupLogsFolder_maxItems(const NS::RefPtr<NS::String>& folder,
                                           std::int32_t maxItems) {
    NS::FileManager& files = NS::FileManager::defaultManager();
    const NS::RefPtr<NS::Array> names = folder ? files.contentsOfDirectoryAtPath(*folder) : nullptr;
    if (!names) {
        return;
    }
    const std::vector<std::size_t> positions = newestFirst(*creationDates(*folder, *names));
    // Widened with its sign and compared without one: a negative limit is beyond every count.
    const auto kept = static_cast<std::size_t>(static_cast<std::int64_t>(maxItems));
    for (std::size_t i = kept; i < positions.size(); ++i) {
        // An entry that cannot be removed stays, and nobody is told.
        (void)files.removeItemAtPath(*entryPath(*folder, names->objectAtIndex(positions[i])));
    }
}
