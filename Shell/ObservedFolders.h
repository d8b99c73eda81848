#pragma once

#include "Platform/Finder/FinderSync.h"

#include <cstddef>
#include <map>
#include <string>

namespace Shell {

// The folders that callers on the bus show, for as long as these are there.
//
// Many windows of many callers can show a folder: the extension hears of the first that begins and
// of the last that ends. Folders are told apart by their paths. Main thread.
class ObservedFolders {
  public:
    // How many a caller can have at once, and how long their paths can be in bytes: more than
    // anybody's windows, what the system opens, and a bound for memory.
    static constexpr std::size_t kFoldersPerCaller = 4096;
    static constexpr std::size_t kLongestPath = 4096;

    explicit ObservedFolders(NS::Ref<FI::FinderSync> extension) noexcept
        : extension_(std::move(extension)) {}

    // Begins once more for a caller; false, and nothing happens, beyond these limits.
    bool begin(const std::string& caller, const NS::Ref<NS::URL>& folder);
    // Ends once for a caller; false when it does not have the folder.
    bool end(const std::string& caller, const NS::Ref<NS::URL>& folder);
    // Ends whatever a caller has, or all of them have.
    void callerGone(const std::string& caller);
    void allCallersGone();

  private:
    using Path = std::string;
    using Begins = std::map<Path, std::size_t>;
    struct Observation {
        NS::Ref<NS::URL> url; // as it was begun
        std::size_t callers;
    };

    void forget(const Path& path);

    NS::Ref<FI::FinderSync> extension_;
    std::map<std::string, Begins> beginsOfCallers_;
    std::map<Path, Observation> observations_;
};

} // namespace Shell
