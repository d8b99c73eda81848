#include "Shell/Client/FinderClient.h"

#include "Shell/Client/ClientConnection.h"
#include "Shell/Client/FileURLText.h"
#include "Shell/Client/FollowedExtension.h"
#include "Shell/Client/Question.h"
#include "Shell/Client/ShownFolders.h"

#include <utility>

namespace Shell {

using std::chrono::milliseconds;
using Clock = ClientConnection::Clock;
using Where = Placing::Where;

namespace {

// How much longer than a command's deadline its answer is waited for: one that was taken up in time
// is to be told as done. What is answered later still is told as timed out.
constexpr milliseconds kGrace{50};

// A place as the rules for offering a menu see it.
struct Judged {
    PlaceURLs urls;
    bool isRefused = false;
    bool hasItemInside = false;
    bool isTargetInside = false;
};

Judged judge(const WatchedFolders& watched, const Place& place) {
    Judged judged;
    WatchedFolders::Items items(watched);
    judged.urls.items.reserve(place.items.size());
    for (const std::string& item : place.items) {
        const Placing placing = items.place(item);
        judged.isRefused =
            judged.isRefused || placing.where == Where::kWatched || placing.where == Where::kBeside;
        judged.hasItemInside = judged.hasItemInside || placing.where == Where::kInside;
        judged.urls.items.push_back(fileURLOf(placing.path));
    }
    const Placing target = watched.placeFolder(place.target);
    judged.isTargetInside = target.where == Where::kWatched || target.where == Where::kInside;
    if (judged.isTargetInside) {
        judged.urls.target = fileURLOf(target.path);
    }
    return judged;
}

bool offers(MenuKind kind, const Judged& place) {
    switch (kind) {
    case MenuKind::kToolbar:
        return true;
    case MenuKind::kContainer:
        return !place.isRefused && place.isTargetInside;
    default:
        return !place.isRefused && place.hasItemInside;
    }
}

std::uint64_t microsecondsOf(Clock::time_point moment) {
    return static_cast<std::uint64_t>(
        std::chrono::duration_cast<std::chrono::microseconds>(moment.time_since_epoch()).count());
}

} // namespace

class FinderClient::Session {
  public:
    ClientConnection connection;
    FollowedExtension extension{connection};
    ShownFolders shown{connection, extension};
    std::function<void()> onChange;
    std::string lastError;

    // After each time that messages were handled; not within, where the bus cannot be asked.
    void tellChanges() {
        if (isTelling_) {
            return;
        }
        isTelling_ = true;
        while (told_ != extension.changes()) {
            told_ = extension.changes();
            shown.update();
            if (onChange) {
                onChange();
            }
        }
        isTelling_ = false;
    }

    // Takes in what has come, then asks about a place; the question is left for its answer.
    std::optional<Outcome> cannotAsk(MenuKind kind, const Place& place, Judged& judged) {
        connection.serve();
        tellChanges();
        if (!extension.isPresent()) {
            return Outcome::kAbsent;
        }
        judged = judge(extension.watched(), place);
        if (!offers(kind, judged)) {
            return Outcome::kNotOffered;
        }
        if (judged.isRefused) {
            judged.urls.items.clear();
        }
        return std::nullopt;
    }

    Outcome ask(Question& question, Clock::time_point deadline) {
        const Outcome outcome = question.ask(deadline).value_or(Outcome::kTimedOut);
        if (outcome != Outcome::kDone) {
            lastError = question.error();
        }
        tellChanges();
        return outcome;
    }

  private:
    std::uint64_t told_ = 0;
    bool isTelling_ = false;
};

FinderClient::FinderClient() : session_(std::make_unique<Session>()) {}

FinderClient::~FinderClient() = default;

int FinderClient::descriptor() const noexcept {
    return session_->connection.bus() == nullptr ? -1 : session_->connection.descriptor();
}

void FinderClient::serve() {
    session_->connection.serve();
    session_->tellChanges();
}

void FinderClient::setOnChange(std::function<void()> onChange) {
    session_->onChange = std::move(onChange);
}

bool FinderClient::waitUntilKnown(milliseconds timeout) {
    (void)session_->connection.waitUntil([this] { return session_->extension.isKnown(); },
                                         Clock::now() + timeout);
    session_->tellChanges();
    return session_->extension.isKnown();
}

bool FinderClient::isPresent() const noexcept {
    return session_->extension.isPresent();
}

std::uint64_t FinderClient::generation() const noexcept {
    return isPresent() ? session_->extension.generation() : 0;
}

const std::vector<std::string>& FinderClient::watchedFolders() const noexcept {
    return session_->extension.watched().folders();
}

const ToolbarItem& FinderClient::toolbarItem() const noexcept {
    return session_->extension.toolbarItem();
}

const std::string& FinderClient::error() const noexcept {
    const std::string& ofConnection = session_->connection.error();
    return ofConnection.empty() ? session_->lastError : ofConnection;
}

std::optional<std::string> FinderClient::watchedFolder(std::string_view folder) const {
    Placing placing = session_->extension.watched().placeFolder(folder);
    if (placing.where != Where::kWatched && placing.where != Where::kInside) {
        return std::nullopt;
    }
    return std::move(placing.path);
}

bool FinderClient::isOffered(MenuKind kind, const Place& place) const {
    return isPresent() && offers(kind, judge(session_->extension.watched(), place));
}

FinderClient::MenuAnswer FinderClient::menu(MenuKind kind, const Place& place,
                                            milliseconds timeout) {
    const auto deadline = Clock::now() + timeout;
    Judged judged;
    if (const auto outcome = session_->cannotAsk(kind, place, judged)) {
        return {*outcome, std::nullopt};
    }
    Question question(session_->connection, session_->extension.owner(), "Menu");
    question.append(static_cast<std::uint64_t>(kind));
    question.append(judged.urls.items);
    question.append(judged.urls.target);
    const Outcome outcome = session_->ask(question, deadline);
    if (outcome != Outcome::kDone) {
        return {outcome, std::nullopt};
    }
    auto menu = question.menu();
    return {menu ? Outcome::kDone : Outcome::kFailed, std::move(menu)};
}

Outcome FinderClient::run(MenuKind kind, std::string_view action, const Place& place,
                          milliseconds timeout) {
    const auto deadline = Clock::now() + timeout;
    Judged judged;
    if (const auto outcome = session_->cannotAsk(kind, place, judged)) {
        return *outcome;
    }
    Question question(session_->connection, session_->extension.owner(), "Run");
    question.append(static_cast<std::uint64_t>(kind));
    question.append(std::string(action));
    question.append(judged.urls.items);
    question.append(judged.urls.target);
    question.append(microsecondsOf(deadline));
    return session_->ask(question, deadline + kGrace);
}

Outcome FinderClient::beginObserving(std::string_view folder, Lifetime lifetime) {
    serve();
    return lifetime == Lifetime::kUntilGone ? session_->shown.begin(folder)
                                            : session_->shown.tellBegin(folder);
}

Outcome FinderClient::endObserving(std::string_view folder) {
    serve();
    return session_->shown.end(folder);
}

Outcome FinderClient::settle(milliseconds timeout) {
    const bool settled = session_->connection.waitUntil(
        [this] { return session_->shown.unanswered() == 0; }, Clock::now() + timeout);
    session_->tellChanges();
    const Outcome worst = session_->shown.takeWorst();
    if (settled) {
        return worst;
    }
    return session_->connection.bus() == nullptr ? Outcome::kAbsent : Outcome::kTimedOut;
}

} // namespace Shell
