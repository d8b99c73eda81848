#include "Shell/PublishedState.h"

#include "Platform/Finder/FinderSyncController.h"

#include <algorithm>
#include <string_view>
#include <utility>

namespace Shell {

namespace {

std::string textOf(const NS::RefPtr<NS::String>& text) {
    return text ? text->utf8() : std::string();
}

std::vector<std::string> textsOfURLs(const NS::RefPtr<NS::Set>& urls) {
    std::vector<std::string> texts;
    if (!urls) {
        return texts;
    }
    for (const NS::Ref<NS::Object>& object : *urls) {
        if (const auto url = NS::as<NS::URL>(NS::RefPtr<NS::Object>(object))) {
            texts.push_back(url->absoluteString()->utf8());
        }
    }
    return texts;
}

NS::RefPtr<NS::Set> currentFolders() {
    return FI::FinderSyncController::defaultController()->directoryURLs();
}

} // namespace

PublishedState::PublishedState(NS::Ref<FI::FinderSync> extension, MenuState state, Host host)
    : extension_(std::move(extension)), state_(std::move(state)), lastState_(state_()),
      lastFolders_(currentFolders()), watchedFolders_(textsOfURLs(lastFolders_)),
      name_(textOf(extension_->toolbarItemName())),
      toolTip_(textOf(extension_->toolbarItemToolTip())),
      hostAnswers_(std::move(host), HostAnswers::Clock::now()) {
    if (const auto image = extension_->toolbarItemImage()) {
        imageName_ = image->name()->utf8();
        imageFile_ = NS::URL::fileURLWithPath(image->path())->absoluteString()->utf8();
    }
}

void PublishedState::refresh() {
    refreshMenuState();
    if (hostAnswers_.refresh(HostAnswers::Clock::now())) {
        noteChange(kHostAnswers);
    }
}

void PublishedState::refreshMenuState() {
    auto state = state_();
    auto folders = currentFolders();
    if (state == lastState_ && folders == lastFolders_) {
        return;
    }
    lastState_ = std::move(state);
    lastFolders_ = std::move(folders);
    ++generation_;
    noteChange(kGeneration);
    if (auto texts = textsOfURLs(lastFolders_); texts != watchedFolders_) {
        watchedFolders_ = std::move(texts);
        noteChange(kWatchedFolders);
    }
    if (auto toolTip = textOf(extension_->toolbarItemToolTip()); toolTip != toolTip_) {
        toolTip_ = std::move(toolTip);
        noteChange(kToolTip);
    }
}

std::vector<const char*> PublishedState::takeChanges() {
    return std::exchange(changes_, {});
}

void PublishedState::noteChange(const char* property) {
    if (std::ranges::find(changes_, std::string_view(property)) == changes_.end()) {
        changes_.push_back(property);
    }
}

} // namespace Shell
