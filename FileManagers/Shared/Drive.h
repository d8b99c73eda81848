#pragma once

#include "FileManagers/Shared/Breaker.h"
#include "FileManagers/Shared/KeptMenus.h"
#include "FileManagers/Shared/NotDone.h"
#include "FileManagers/Shared/Patience.h"
#include "FileManagers/Shared/ShownViews.h"
#include "Shell/Client/FinderClient.h"

#include <chrono>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace FileManagers {

// The drive in a file manager: all that its plug-in needs of the extension. A plug-in makes one,
// has the file manager's loop serve it, and otherwise only translates.
//
// Belongs to the thread of that loop, which draws the windows, and never keeps it: the questions of
// one click, or a command, wait for their answers for less than a quarter of a second, and after
// one that had none in time there is no waiting at all until the extension takes in messages again.
// One that does, but is late time and again, is left in peace for pauses that double from two
// seconds to a minute; at the end of each the file manager builds its menus anew.
class Drive {
  public:
    struct Times {
        // For the answers at one click; a command, to which the client adds a twentieth of a second
        // and which is followed by a dialog when it fails, gets less.
        std::chrono::milliseconds patience = Shell::FinderClient::kDefaultTimeout;
        Breaker::Clock::duration firstPause = std::chrono::seconds(2); // of the breaker
    };

    // Connects to the session bus, without waiting for it.
    Drive() : Drive(Times()) {}
    explicit Drive(Times times);
    ~Drive() = default;
    Drive(const Drive&) = delete;
    Drive& operator=(const Drive&) = delete;

    // For the loop: readable when serve() has something to do, the same for life. -1 without a bus.
    int descriptor() const noexcept { return client_.descriptor(); }
    void serve();
    // Called by serve() when entries that are shown may be old, or whether there are any: to build
    // them anew. May ask for menus.
    void setOnChange(std::function<void()> onChange) { onChange_ = std::move(onChange); }
    // Called by pick() and clickedMenu(): tells the user, without waiting for him.
    void setOnNotDone(std::function<void(const NotDone&)> onNotDone) {
        onNotDone_ = std::move(onNotDone);
    }

    // What there is of the drive.
    enum class Presence : std::uint8_t {
        kAway,
        kWaiting, // an extension, whose host has not told it of the drive yet
        kThere,
    };
    Presence presence();
    // While it is there: false when the extension, or its host, has left a question unanswered.
    bool isAnswering() const noexcept { return client_.isAnswering(); }
    bool hostAnswers() const noexcept { return client_.hostAnswers(); }
    // Its own folder, an absolute path; empty unless it is there.
    std::string folder();

    // Whether a folder, by its absolute path, is the drive's or in it, and its extension there.
    bool isOnDrive(const std::string& folder);
    const Shell::ToolbarItem& toolbarItem() const noexcept { return client_.toolbarItem(); }

    // The entries for a place, for a file manager that builds its menus whenever it likes; none
    // where none are offered, which outside of the drive is everywhere. Each is asked for once in a
    // generation. Valid until the next call.
    const std::vector<Shell::MenuEntry>& entries(Shell::MenuKind kind, const Shell::Place& place);
    // The same for a menu that is being opened: asked for afresh where that can be.
    const std::vector<Shell::MenuEntry>& freshEntries(Shell::MenuKind kind,
                                                      const Shell::Place& place);
    // The same for a menu that a user has just clicked for: asked for afresh, and what goes wrong
    // is told.
    std::vector<Shell::MenuEntry> clickedEntries(Shell::MenuKind kind, const Shell::Place& place);
    // Carries out an entry that was picked, on the place that it was shown for. When it fails the
    // user is told; one that timed out is not carried out later either.
    void pick(Shell::MenuKind kind, const Shell::MenuEntry& entry, const Shell::Place& place);

    // A window or tab shows these folders now, and none else; close() when it has gone.
    void show(ShownViews::View view, const std::vector<std::string>& folders) {
        views_.show(view, folders);
    }
    void close(ShownViews::View view) { views_.close(view); }

  private:
    using Outcome = Shell::Outcome;

    void learn();
    void noteChange();
    bool isOutOfPlace(Shell::MenuKind kind, const Shell::Place& place);
    Outcome outcomeBeforeAsking();
    Shell::FinderClient::MenuAnswer ask(Shell::MenuKind kind, const Shell::Place& place);
    const std::vector<Shell::MenuEntry>& keepAnswer(Shell::MenuKind kind, const Shell::Place& place,
                                                    std::uint64_t generation);
    template <class Wait>
    auto waited(Wait wait);
    void note(Outcome outcome);
    void tell(const std::string& title, Outcome outcome);

    Patience patience_;
    Shell::FinderClient client_;
    bool hasLearned_ = false;
    std::string owner_;
    std::string name_; // for the user, also when the extension has gone
    Breaker breaker_;
    KeptMenus kept_;
    ShownViews views_{client_};
    std::function<void()> onChange_;
    std::function<void(const NotDone&)> onNotDone_;
};

// A title where a character, "_" or "&", marks the next as the key to press: doubled it is shown.
std::string withoutMnemonics(const std::string& title, char marker);

} // namespace FileManagers
