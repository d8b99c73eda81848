#include "Shell/Client/ShownFolders.h"

#include "Shell/Client/FileURLText.h"
#include "Shell/Client/Question.h"
#include "Shell/FinderInterface.h"

#include <utility>

namespace Shell {

Outcome ShownFolders::begin(std::string_view folder) {
    Shown& shown = shown_[std::string(folder)];
    ++shown.count;
    update();
    if (!extension_.isPresent()) {
        return Outcome::kAbsent;
    }
    return shown.told.empty() ? Outcome::kNotOffered : Outcome::kDone;
}

Outcome ShownFolders::tellBegin(std::string_view folder) {
    const auto url = watchedURL(folder);
    if (!url) {
        return extension_.isPresent() ? Outcome::kNotOffered : Outcome::kAbsent;
    }
    return tell("BeginObserving", *url, false);
}

Outcome ShownFolders::end(std::string_view folder) {
    update();
    const auto found = shown_.find(folder);
    if (found == shown_.end()) {
        const auto url = watchedURL(folder);
        if (!url) {
            return extension_.isPresent() ? Outcome::kNotOffered : Outcome::kAbsent;
        }
        return tell("EndObserving", *url, std::nullopt);
    }
    if (--found->second.count > 0) {
        return Outcome::kDone;
    }
    const std::string told = found->second.told;
    shown_.erase(found);
    return told.empty() ? Outcome::kNotOffered : tell("EndObserving", told, std::nullopt);
}

void ShownFolders::update() {
    const std::string& owner = extension_.isPresent() ? extension_.owner() : std::string();
    if (toldOwner_ != owner) {
        toldOwner_ = owner;
        for (auto& [folder, shown] : shown_) {
            shown.told.clear();
        }
    }
    for (auto& [folder, shown] : shown_) {
        const std::string url = watchedURL(folder).value_or("");
        if (url == shown.told) {
            continue;
        }
        if (!shown.told.empty()) {
            (void)tell("EndObserving", shown.told, std::nullopt);
        }
        shown.told = url;
        if (!url.empty()) {
            (void)tell("BeginObserving", url, true);
        }
    }
}

std::optional<std::string> ShownFolders::watchedURL(std::string_view folder) const {
    if (!extension_.isPresent()) {
        return std::nullopt;
    }
    const Placing placing = extension_.watched().placeFolder(folder);
    const bool isWatched =
        placing.where == Placing::Where::kWatched || placing.where == Placing::Where::kInside;
    return isWatched ? std::optional(fileURLOf(placing.path)) : std::nullopt;
}

Outcome ShownFolders::tell(const char* method, const std::string& url,
                           std::optional<bool> untilGone) {
    sd_bus* const bus = connection_.bus();
    const char* const owner = extension_.owner().c_str();
    const int result =
        untilGone ? sd_bus_call_method_async(bus, nullptr, owner, FinderInterface::kObject,
                                             FinderInterface::kInterface, method, &answered, this,
                                             "sb", url.c_str(), static_cast<int>(*untilGone))
                  : sd_bus_call_method_async(bus, nullptr, owner, FinderInterface::kObject,
                                             FinderInterface::kInterface, method, &answered, this,
                                             "s", url.c_str());
    connection_.awaitEvents();
    if (result < 0) {
        return Outcome::kFailed;
    }
    ++unanswered_;
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
