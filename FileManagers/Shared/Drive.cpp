#include "FileManagers/Shared/Drive.h"

#include <utility>

namespace FileManagers {

using Shell::MenuEntry;
using Shell::MenuKind;
using Shell::Outcome;
using Shell::Place;

namespace {

const std::vector<MenuEntry> kNone;

} // namespace

// With what a command is waited for beyond it, less than a quarter of a second.
static_assert(Shell::FinderClient::kDefaultTimeout <= std::chrono::milliseconds(200));

Drive::Drive(Times times) : patience_(times.patience), breaker_(times.firstPause) {
    client_.setOnChange([this] {
        noteChange();
        if (const auto tell = onChange_) { // which it may replace
            tell();
        }
    });
}

void Drive::serve() {
    client_.serve();
}

// What waits for the extension, for as long as there is patience.
template <class Wait>
auto Drive::waited(Wait wait) {
    const auto from = Patience::Clock::now();
    auto result = wait(patience_.left(from));
    patience_.noteWait(from, Patience::Clock::now());
    return result;
}

// Once, a window that is shown before anything is known waits for it; what is known then is kept up
// to date by serve().
void Drive::learn() {
    if (!std::exchange(hasLearned_, true)) {
        (void)waited([this](auto patience) { return client_.waitUntilKnown(patience); });
    }
    noteChange();
}

void Drive::noteChange() {
    if (owner_ != client_.owner()) {
        owner_ = client_.owner();
        breaker_.reset();
    }
    if (client_.isPresent()) {
        name_ = client_.toolbarItem().name;
    }
}

Drive::Presence Drive::presence() {
    learn();
    if (client_.isPresent()) {
        return Presence::kThere;
    }
    return client_.isWaiting() ? Presence::kWaiting : Presence::kAway;
}

std::string Drive::folder() {
    learn();
    const std::vector<std::string>& folders = client_.watchedFolders();
    return folders.empty() ? std::string() : folders.front();
}

bool Drive::isOnDrive(const std::string& folder) {
    learn();
    return client_.isPresent() && client_.watchedFolder(folder).has_value();
}

// The toolbar's menu could be had everywhere, but has no place outside of the drive. Other menus
// the client asks for only where they are offered.
bool Drive::isOutOfPlace(MenuKind kind, const Place& place) {
    return kind == MenuKind::kToolbar && !isOnDrive(place.target);
}

Outcome Drive::outcomeBeforeAsking() {
    learn();
    if (!client_.isPresent()) {
        return Outcome::kAbsent;
    }
    return breaker_.isOpen(client_.isAnswering(), Breaker::Clock::now()) ? Outcome::kTimedOut
                                                                         : Outcome::kDone;
}

Shell::FinderClient::MenuAnswer Drive::ask(MenuKind kind, const Place& place) {
    if (isOutOfPlace(kind, place)) {
        return {Outcome::kNotOffered, {}};
    }
    auto answer = waited([&](auto patience) { return client_.menu(kind, place, patience); });
    note(answer.outcome);
    return answer;
}

void Drive::note(Outcome outcome) {
    noteChange();
    if (outcome == Outcome::kTimedOut) {
        breaker_.noteTimeout(Breaker::Clock::now());
        client_.tellChangeAt(breaker_.closing());
    } else if (outcome == Outcome::kDone) {
        breaker_.noteAnswer();
    }
}

const std::vector<MenuEntry>& Drive::entries(MenuKind kind, const Place& place) {
    learn();
    if (!client_.isPresent()) {
        return kNone;
    }
    const auto generation = client_.generation();
    if (const Shell::Menu* const kept = kept_.find(kind, place, generation)) {
        return kept->entries;
    }
    if (outcomeBeforeAsking() != Outcome::kDone) {
        return kNone;
    }
    return keepAnswer(kind, place, generation);
}

const std::vector<MenuEntry>& Drive::freshEntries(MenuKind kind, const Place& place) {
    if (outcomeBeforeAsking() == Outcome::kDone) {
        (void)keepAnswer(kind, place, client_.generation());
    }
    return entries(kind, place);
}

// In the generation that there is when it is asked.
const std::vector<MenuEntry>& Drive::keepAnswer(MenuKind kind, const Place& place,
                                                std::uint64_t generation) {
    auto answer = ask(kind, place);
    switch (answer.outcome) {
    case Outcome::kDone:
    case Outcome::kFailed: // what failed once would fail at each look
    case Outcome::kTooLarge:
        return kept_.keep(kind, place, generation, std::move(answer.menu).value_or(Shell::Menu()))
            .entries;
    default:
        return kNone;
    }
}

std::vector<MenuEntry> Drive::clickedEntries(MenuKind kind, const Place& place) {
    Outcome outcome = outcomeBeforeAsking();
    Shell::FinderClient::MenuAnswer answer;
    if (outcome == Outcome::kDone) {
        answer = ask(kind, place);
        outcome = answer.outcome;
    }
    if (outcome != Outcome::kDone) {
        tell(name_, outcome);
    }
    return answer.menu ? std::move(answer.menu->entries) : std::vector<MenuEntry>();
}

void Drive::pick(MenuKind kind, const MenuEntry& entry, const Place& place) {
    Outcome outcome = outcomeBeforeAsking();
    if (outcome == Outcome::kDone) {
        outcome = waited([&](auto patience) {
            return client_.run(kind, entry.action, place, patience * 3 / 4);
        });
        note(outcome);
    }
    if (outcome != Outcome::kDone) {
        tell(entry.title, outcome);
    }
}

void Drive::tell(const std::string& title, Outcome outcome) {
    if (onNotDone_) {
        onNotDone_(notDone(title, outcome, name_, client_.error()));
    }
}

std::string withoutMnemonics(const std::string& title, char marker) {
    std::string label;
    for (const char character : title) {
        label.append(character == marker ? 2 : 1, character);
    }
    return label;
}

} // namespace FileManagers
