#include "CustomConsoleLogging/LoggingFolders.h"
#include "CustomConsoleLogging/QVLogging.h"
#include "Platform/Foundation/Array.h"
#include "Platform/Foundation/Exception.h"
#include "Platform/Foundation/FileManager.h"

#include <algorithm>
#include <cstddef>
#include <vector>

namespace {

constexpr std::int32_t kOwnEntries = 18;
constexpr std::int32_t kExtensionEntries = 2;

struct Entry {
    double created;
    std::size_t position; // in the listing
};

// Of entries of the same date the first that was listed counts as the newest.
bool isNewer(const Entry& a, const Entry& b) noexcept {
    return a.created != b.created ? a.created > b.created : a.position < b.position;
}

NS::Ref<NS::String> nameAt(const NS::FileFolder& folder, std::size_t position) {
    const NS::Ref<NS::Object> name = folder.names().objectAtIndex(position);
    return NS::Ref<NS::String>(static_cast<NS::String&>(*name));
}

// In the order of the listing. An entry without a creation date is not passed over: the missing
// date raises. QVLoggingPruning.IsLeftByAnEntryWithoutACreationDate holds it.
std::vector<Entry> entriesOf(NS::FileFolder& folder) {
    std::vector<Entry> entries;
    entries.reserve(folder.names().count());
    for (std::size_t i = 0; i < folder.names().count(); ++i) {
        const auto created = folder.creationTimeOfItem(nameAt(folder, i));
        if (!created) {
            NS::Exception::raise(NS::kInvalidArgumentException,
                                 "*** -[__NSArrayM insertObject:atIndex:]: object cannot be nil");
        }
        entries.push_back({*created, i});
    }
    return entries;
}

// The entry that as many are newer than.
Entry entryBehind(std::size_t newer, std::vector<Entry> entries) {
    const auto found = entries.begin() + static_cast<std::ptrdiff_t>(newer);
    std::ranges::nth_element(entries, found, isNewer);
    return *found;
}

// In the order of the listing, in which the file system removes them quickest.
std::vector<Entry> allButNewest(std::size_t kept, std::vector<Entry> entries) {
    if (kept >= entries.size()) {
        return {};
    }
    const Entry newestToGo = entryBehind(kept, entries);
    std::erase_if(entries, [&](const Entry& entry) { return isNewer(entry, newestToGo); });
    return entries;
}

} // namespace

void QVLogging::cleanup() {
    cleanupLogsFolder_maxItems(path(), kOwnEntries);
    cleanupLogsFolder_maxItems(containedLoggingFolder(), kExtensionEntries);
}

void QVLogging::cleanupLogsFolder_maxItems(const NS::RefPtr<NS::String>& folder,
                                           std::int32_t maxItems) {
    const auto logs = folder ? NS::FileManager::defaultManager().folderAtPath(*folder) : nullptr;
    if (!logs) {
        return;
    }
    // Widened with its sign and compared without one: a negative limit is beyond every count.
    const auto kept = static_cast<std::size_t>(static_cast<std::int64_t>(maxItems));
    for (const Entry& entry : allButNewest(kept, entriesOf(*logs))) {
        // An entry that cannot be removed stays, and nobody is told.
        (void)logs->removeItem(nameAt(*logs, entry.position));
    }
}
