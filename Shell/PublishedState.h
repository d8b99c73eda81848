#pragma once

#include "Platform/Finder/FinderSync.h"
#include "Platform/Foundation/Set.h"
#include "Shell/HostAnswers.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace Shell {

// The objects that the extension's menus and its tool tip depend on. Records are replaced, not
// changed, so that comparing them by identity tells whether anything is new.
using MenuState = std::function<std::vector<NS::RefPtr<NS::Object>>()>;

// What the extension tells of itself without being asked for a menu. Main thread.
class PublishedState {
  public:
    // The names of the properties that change.
    static constexpr const char* kWatchedFolders = "WatchedFolders";
    static constexpr const char* kGeneration = "Generation";
    static constexpr const char* kToolTip = "ToolbarItemToolTip";
    static constexpr const char* kHostAnswers = "HostAnswers";

    // Reads it for the first time, what never changes included.
    PublishedState(NS::Ref<FI::FinderSync> extension, MenuState state, Host host = {});

    // Reads it again where the watched folders or the menu state are others than before.
    void refresh();
    // The host is being asked for its record.
    void noteAsked() { hostAnswers_.noteAsked(HostAnswers::Clock::now()); }
    // When to refresh() also if nothing happens.
    std::optional<HostAnswers::Clock::time_point> nextLook() const noexcept {
        return hostAnswers_.nextLook();
    }
    // The names of the properties that have changed since this was asked last.
    std::vector<const char*> takeChanges();

    // File URLs.
    const std::vector<std::string>& watchedFolders() const noexcept { return watchedFolders_; }
    // 1 at first; one more for each change of the menu state or the watched folders.
    std::uint64_t generation() const noexcept { return generation_; }
    // Of the toolbar item; empty where the extension has none.
    const std::string& name() const noexcept { return name_; }
    const std::string& toolTip() const noexcept { return toolTip_; }
    const std::string& imageName() const noexcept { return imageName_; }
    const std::string& imageFile() const noexcept { return imageFile_; } // a file URL
    // False while the host is not there, or since it has not answered.
    bool hostAnswers() const noexcept { return hostAnswers_.value(); }

  private:
    void refreshMenuState();
    void noteChange(const char* property);

    NS::Ref<FI::FinderSync> extension_;
    MenuState state_;
    std::vector<NS::RefPtr<NS::Object>> lastState_;
    NS::RefPtr<NS::Set> lastFolders_;
    std::vector<const char*> changes_;
    std::vector<std::string> watchedFolders_;
    std::uint64_t generation_ = 1;
    std::string name_;
    std::string toolTip_;
    std::string imageName_;
    std::string imageFile_;
    HostAnswers hostAnswers_;
};

} // namespace Shell
