#include "Shell/Client/FinderClient.h"

#include "Shell/Client/ClientConnection.h"
#include "Shell/Client/FollowedExtension.h"
#include "Shell/Client/FollowedName.h"
#include "Shell/Client/Offer.h"
#include "Shell/Client/Question.h"
#include "Shell/Client/ShownFolders.h"
#include "Shell/Client/WatchedFolders.h"
#include "Shell/FinderInterface.h"

#include <algorithm>
#include <utility>

namespace Shell {

using std::chrono::milliseconds;
using Clock = ClientConnection::Clock;

namespace {

// How much longer than a command's deadline its answer is waited for: one that was taken up in time
// is to be told as done.
constexpr milliseconds kGrace{50};
// Longer than anybody waits, and far from what a clock can count.
constexpr milliseconds kLongestTimeout = std::chrono::hours(24);

Clock::time_point deadlineAfter(milliseconds timeout) {
    return Clock::now() + std::clamp(timeout, milliseconds::zero(), kLongestTimeout);
}

} // namespace

class FinderClient::Session {
  public:
    ClientConnection connection;
    FollowedExtension extension{connection};
    FollowedName waiting{connection, FinderInterface::kWaitingName};
    ShownFolders shown{connection, extension};
    std::function<void()> onChange;
    std::string error;

    // Takes in what has come. What has changed is told once: when telling it changes something, the
    // loop has its turn before that is told.
    void serve() {
        connection.serve();
        takeIn();
        if (!isTelling_ && told_ != changes()) {
            told_ = changes();
            const Telling telling(isTelling_);
            if (const auto tell = onChange) { // which it may replace
                tell();
            }
        }
        handled();
    }

    // After each time that messages were handled.
    void handled() {
        takeIn();
        if (told_ != changes()) {
            connection.wake();
        }
    }

    bool waitUntil(const std::function<bool()>& condition, milliseconds timeout) {
        const bool holds = connection.waitUntil(condition, deadlineAfter(timeout));
        handled();
        return holds;
    }

    // What can be asked about a place, as things are now; nothing, and the outcome, when nothing.
    std::optional<OfferedPlace> offered(MenuKind kind, const Place& place, Outcome& outcome) {
        connection.serveIfReady();
        handled();
        outcome = Outcome::kAbsent;
        if (!extension.isPresent()) {
            return std::nullopt;
        }
        outcome = Outcome::kNotOffered;
        return offeredPlace(extension.watchedFolders(), kind, place);
    }

    void tellChangeAt(Clock::time_point moment) {
        due_ = moment;
        handled();
    }

    Outcome ask(Question& question, Clock::time_point deadline) {
        const Outcome outcome = question.ask(deadline);
        error = question.error();
        if (outcome == Outcome::kTimedOut) {
            extension.doubt();
        }
        handled();
        return outcome;
    }

  private:
    class Telling {
      public:
        explicit Telling(bool& flag) : before_(std::exchange(flag, true)), flag_(flag) {}
        ~Telling() { flag_ = before_; }
        Telling(const Telling&) = delete;
        Telling& operator=(const Telling&) = delete;

      private:
        bool before_;
        bool& flag_;
    };

    std::uint64_t changes() const noexcept {
        return extension.changes() + waiting.changes() + moments_;
    }

    void takeIn() {
        if (connection.bus() == nullptr) {
            extension.busLost();
            waiting.busLost();
        }
        shown.update();
        if (due_ && *due_ <= Clock::now()) {
            due_.reset();
            ++moments_;
        } else if (due_) {
            connection.wakeAt(*due_);
        }
    }

    std::optional<Clock::time_point> due_; // a change that is told then
    std::uint64_t moments_ = 0;            // that were due
    std::uint64_t told_ = changes();
    bool isTelling_ = false;
};

FinderClient::FinderClient() : session_(std::make_unique<Session>()) {}

FinderClient::~FinderClient() = default;

int FinderClient::descriptor() const noexcept {
    return session_->connection.descriptor();
}

void FinderClient::serve() {
    session_->serve();
}

void FinderClient::setOnChange(std::function<void()> onChange) {
    session_->onChange = std::move(onChange);
}

void FinderClient::tellChangeAt(std::chrono::steady_clock::time_point moment) {
    session_->tellChangeAt(moment);
}

bool FinderClient::waitUntilKnown(milliseconds timeout) {
    (void)session_->waitUntil([this] { return session_->extension.isKnown(); }, timeout);
    return session_->extension.isKnown(); // that it is absent when the bus has gone
}

bool FinderClient::isPresent() const noexcept {
    return session_->extension.isPresent();
}

bool FinderClient::isWaiting() const noexcept {
    return !session_->waiting.owner().empty() && !isPresent();
}

const std::string& FinderClient::owner() const noexcept {
    return session_->extension.owner();
}

bool FinderClient::isAnswering() const noexcept {
    return session_->extension.isAnswering();
}

bool FinderClient::hostAnswers() const noexcept {
    return session_->extension.hostAnswers();
}

std::uint64_t FinderClient::generation() const noexcept {
    return session_->extension.generation();
}

const std::vector<std::string>& FinderClient::watchedFolders() const noexcept {
    return session_->extension.watchedFolders();
}

const ToolbarItem& FinderClient::toolbarItem() const noexcept {
    return session_->extension.toolbarItem();
}

const std::string& FinderClient::error() const noexcept {
    const std::string& ofConnection = session_->connection.error();
    return ofConnection.empty() ? session_->error : ofConnection;
}

std::optional<std::string> FinderClient::watchedFolder(std::string_view folder) const {
    Placing placing = WatchedFolders(watchedFolders()).placeFolder(folder);
    if (!placing.isOnDrive()) {
        return std::nullopt;
    }
    return std::move(placing.path);
}

bool FinderClient::isOffered(MenuKind kind, const Place& place) const {
    return isPresent() && offeredPlace(watchedFolders(), kind, place).has_value();
}

FinderClient::MenuAnswer FinderClient::menu(MenuKind kind, const Place& place,
                                            milliseconds timeout) {
    const auto deadline = deadlineAfter(timeout);
    MenuAnswer answer;
    const auto offered = session_->offered(kind, place, answer.outcome);
    if (!offered) {
        return answer;
    }
    Question question(session_->connection, session_->extension, "MenuOfPaths");
    question.append(kind, *offered);
    answer.outcome = session_->ask(question, deadline);
    if (answer.outcome == Outcome::kDone) {
        answer.menu = question.menu();
        if (!answer.menu) {
            answer.outcome = Outcome::kFailed;
            session_->error = "its menu has a form that is not known here";
        }
    }
    return answer;
}

Outcome FinderClient::run(MenuKind kind, std::string_view action, const Place& place,
                          milliseconds timeout) {
    const auto deadline = deadlineAfter(timeout);
    Outcome outcome = Outcome::kAbsent;
    const auto offered = session_->offered(kind, place, outcome);
    if (!offered) {
        return outcome;
    }
    Question question(session_->connection, session_->extension, "RunOnPaths");
    question.append(action);
    question.append(kind, *offered);
    question.append(ClientConnection::microsecondsOf(deadline));
    return session_->ask(question, deadline + kGrace);
}

Outcome FinderClient::beginObserving(std::string_view folder, Lifetime lifetime) {
    session_->connection.serve();
    session_->handled();
    return lifetime == Lifetime::kUntilGone ? session_->shown.begin(folder)
                                            : session_->shown.tellBegin(folder);
}

Outcome FinderClient::endObserving(std::string_view folder) {
    session_->connection.serve();
    session_->handled();
    return session_->shown.end(folder);
}

Outcome FinderClient::settle(milliseconds timeout) {
    const bool settled =
        session_->waitUntil([this] { return session_->shown.unanswered() == 0; }, timeout);
    const Outcome worst = session_->shown.takeWorst();
    if (settled) {
        return worst;
    }
    return session_->connection.bus() == nullptr ? Outcome::kAbsent : Outcome::kTimedOut;
}

} // namespace Shell
