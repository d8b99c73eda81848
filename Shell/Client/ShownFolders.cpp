#include "Shell/Client/ShownFolders.h"

#include "Shell/Client/FileURLText.h"
#include "Shell/Client/Question.h"
#include "Shell/Client/WatchedFolders.h"
#include "Shell/FinderInterface.h"

#include <utility>

namespace Shell {

namespace {

// How much is told to an extension that takes nothing in, before it is told nothing more.
constexpr std::size_t kMostUnanswered = 4096;

} // namespace

Outcome ShownFolders::begin(std::string_view folder) {
    update();
    auto shown = shown_.find(folder);
    if (shown == shown_.end()) {
        shown = shown_.emplace(folder, Shown()).first;
        place(shown->first, shown->second);
    }
    ++shown->second.count;
    return shown->second.told.empty() ? notTold() : Outcome::kDone;
}

Outcome ShownFolders::tellBegin(std::string_view folder) {
    const std::string url = watchedURL(folder);
    return url.empty() ? notTold() : tellBegin(url, false);
}

Outcome ShownFolders::end(std::string_view folder) {
    update();
    const auto shown = shown_.find(folder);
    if (shown != shown_.end() && --shown->second.count > 0) {
        return Outcome::kDone;
    }
    const std::string url =
        shown == shown_.end() ? watchedURL(folder) : std::move(shown->second.told);
    if (shown != shown_.end()) {
        shown_.erase(shown);
    }
    return url.empty() ? notTold() : tellEnd(url);
}

void ShownFolders::update() {
    const std::string owner = extension_.isPresent() ? extension_.owner() : "";
    if (owner == toldOwner_ && extension_.watchedFolders() == watchedFolders_) {
        return;
    }
    for (auto& [folder, shown] : shown_) {
        if (owner != toldOwner_) {
            shown.told.clear(); // it went with the extension that knew of it
        }
        place(folder, shown);
    }
    toldOwner_ = owner;
    watchedFolders_ = extension_.watchedFolders();
}

void ShownFolders::place(const std::string& folder, Shown& shown) {
    std::string url = watchedURL(folder);
    if (url == shown.told) {
        return;
    }
    if (!shown.told.empty()) {
        (void)tellEnd(shown.told); // one that cannot be told is as good as told
    }
    shown.told = !url.empty() && tellBegin(url, true) == Outcome::kDone ? std::move(url) : "";
}

std::string ShownFolders::watchedURL(std::string_view folder) const {
    if (!extension_.isPresent()) {
        return {};
    }
    const Placing placing = WatchedFolders(extension_.watchedFolders()).placeFolder(folder);
    return placing.isOnDrive() ? fileURLOf(placing.path) : std::string();
}

Outcome ShownFolders::notTold() const noexcept {
    return extension_.isPresent() ? Outcome::kNotOffered : Outcome::kAbsent;
}

Outcome ShownFolders::tellBegin(const std::string& url, bool untilCallerGoes) {
    return isCongested()
               ? Outcome::kTimedOut
               : sent(sd_bus_call_method_async(
                     connection_.bus(), nullptr, extension_.owner().c_str(),
                     FinderInterface::kObject, FinderInterface::kInterface, "BeginObserving",
                     &answered, this, "sb", url.c_str(), static_cast<int>(untilCallerGoes)));
}

Outcome ShownFolders::tellEnd(const std::string& url) {
    return isCongested()
               ? Outcome::kTimedOut
               : sent(sd_bus_call_method_async(connection_.bus(), nullptr,
                                               extension_.owner().c_str(), FinderInterface::kObject,
                                               FinderInterface::kInterface, "EndObserving",
                                               &answered, this, "s", url.c_str()));
}

bool ShownFolders::isCongested() const noexcept {
    return unanswered_ >= kMostUnanswered;
}

Outcome ShownFolders::sent(int result) {
    if (result < 0) {
        return Outcome::kFailed;
    }
    ++unanswered_;
    connection_.awaitEvents();
    return Outcome::kDone;
}

int ShownFolders::answered(sd_bus_message* reply, void* object, sd_bus_error*) noexcept {
    auto& self = *static_cast<ShownFolders*>(object);
    --self.unanswered_;
    if (const Outcome outcome = outcomeOf(reply); outcome != Outcome::kDone) {
        self.worst_ = outcome;
    }
    return 1;
}

Outcome ShownFolders::takeWorst() noexcept {
    return std::exchange(worst_, Outcome::kDone);
}

} // namespace Shell
