#pragma once

#include "Programs/Finder/Arguments.h"
#include "Shell/Client/FinderClient.h"

#include <chrono>
#include <optional>
#include <ostream>
#include <string>

// The commands of the terminal Finder, over a client of the extension. Each writes its answer to
// the output and throws UserError with one line when it cannot do what was asked.
class Commands {
  public:
    // Without a time-out questions wait long enough for a person at a terminal: two seconds, and a
    // tenth of a millisecond for each selected item. Output and client outlive it.
    Commands(Shell::FinderClient& client, std::ostream& output,
             std::optional<std::chrono::milliseconds> timeout)
        : client_(client), output_(output), timeout_(timeout) {}

    enum class Format : bool { kText, kJson };

    // Whether the extension runs, what it watches and what its toolbar item is.
    void status(Format format);
    // The menu, as a person would see it or as JSON. Where the extension is not asked, an empty
    // one.
    void menu(const MenuRequest& request, Format format, bool onTerminal);
    // Picks the entry of a title. Says nothing, or which entry that was as JSON.
    void pick(const MenuRequest& request, const std::string& title, Format format);
    // Tells that a folder is shown, or no longer is.
    void beginObserving(const std::string& folder);
    void endObserving(const std::string& folder);

  private:
    std::chrono::milliseconds timeoutFor(const Shell::Place& place) const;
    void requirePresence();
    [[noreturn]] void fail(Shell::Outcome outcome, const std::string& what) const;
    Shell::Menu menuFor(const MenuRequest& request);
    void requireTold(Shell::Outcome outcome, const std::string& folder);

    Shell::FinderClient& client_;
    std::ostream& output_;
    std::optional<std::chrono::milliseconds> timeout_;
};
