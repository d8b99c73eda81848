#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace Shell {

// What a file manager shows when it asks for a menu.
enum class MenuKind : std::uint64_t { kItems = 0, kContainer = 1, kSidebar = 2, kToolbar = 3 };

struct MenuEntry {
    std::string title;
    std::string action; // empty for an entry that only tells something
    bool enabled = true;

    bool operator==(const MenuEntry&) const = default;
};

struct Menu {
    std::string title;
    std::vector<MenuEntry> entries; // in the order in which they are shown

    bool operator==(const Menu&) const = default;
};

// What a menu is about. Absolute paths in the bytes of the file system, as the file manager has
// them: symbolic links and "." and ".." may be in them.
struct Place {
    std::vector<std::string> items; // selected, in order
    std::string target; // the folder whose window or background is meant; empty for none

    bool operator==(const Place&) const = default;
};

// How a question or a command ended.
enum class Outcome : std::uint8_t {
    kDone,
    kNotOffered, // not a place for that menu; see isOffered()
    kNotInMenu,  // the entry is not, or no longer, in the menu, or disabled
    kAbsent,     // no extension is running, or it is still starting
    kTimedOut,   // no answer in time; a command is not begun later either
    kTooLarge,   // the selection does not fit a message of the bus
    kFailed,     // the extension, or the bus, reports an error
};

// What an extension shows in a toolbar.
struct ToolbarItem {
    std::string name;
    std::string toolTip;
    std::string imageName; // in an icon theme
    std::string imageFile; // absolute path; empty when there is none
};

// A file manager's connection to the extension over the session bus.
//
// Follows what the extension says of itself (watched folders, toolbar item, generation), so that
// asking about a place outside of them costs nothing. A question waits for its answer, but not
// longer than its time-out; nothing else waits at all, whatever the state of the extension and of
// the bus. Belongs to one thread, whose loop polls descriptor() and calls serve().
class FinderClient {
  public:
    static constexpr std::chrono::milliseconds kDefaultTimeout{200};

    // Connects to the session bus without waiting for it. Where there is none the client stays
    // absent; error() says why.
    FinderClient();
    ~FinderClient();
    FinderClient(const FinderClient&) = delete;
    FinderClient& operator=(const FinderClient&) = delete;

    // For a foreign loop: readable when serve() has something to do. -1 when there is no bus. Owned
    // by the client, the same for its life.
    int descriptor() const noexcept;
    // Takes in what has come, without waiting.
    void serve();
    // Called by serve(), and by nothing else, when watched folders, toolbar item, generation or
    // presence, or what the extension says of its host, have changed since, or isAnswering() is
    // true again: a question that learns of it has the descriptor readable. May ask questions, but
    // not destroy the client.
    void setOnChange(std::function<void()> onChange);
    // Has a change told at a moment, whether there is one or not, for who left the extension alone
    // until then. A later call replaces the moment.
    void tellChangeAt(std::chrono::steady_clock::time_point moment);

    // Waits until what the extension says of itself is known, or until it is known to be absent;
    // false when neither was so in time.
    bool waitUntilKnown(std::chrono::milliseconds timeout = kDefaultTimeout);
    // True when an extension is on the bus and has said what it watches.
    bool isPresent() const noexcept;
    // True when none is, but one is there that waits for its host to tell it of the drive.
    bool isWaiting() const noexcept;
    // The extension's own name on the bus, another one for each that is started; empty while there
    // is none.
    const std::string& owner() const noexcept;
    // False from a question or a command that timed out until the extension takes in messages
    // again, which is told as a change. Costs nothing: who wants never to wait twice for one that
    // is stopped asks nothing meanwhile.
    bool isAnswering() const noexcept;
    // False since its host has left it without an answer; menus show what was known before.
    bool hostAnswers() const noexcept;
    // Changes whenever the menu of a place may have changed, also to that of another extension;
    // never 0 while present.
    std::uint64_t generation() const noexcept;
    // Absolute paths as the extension spells them, without a slash at the end.
    const std::vector<std::string>& watchedFolders() const noexcept;
    const ToolbarItem& toolbarItem() const noexcept;
    // Why there is no bus, or what the last question failed of, in the words of the system or the
    // extension; empty when an outcome says it all.
    const std::string& error() const noexcept;

    // The path of a folder as the extension has it, when it is a watched folder or lies in one,
    // compared by components with symbolic links resolved; else nothing. Looks at the file system
    // only.
    std::optional<std::string> watchedFolder(std::string_view folder) const;

    // Whether the menu of a kind can be asked for a place. The container's needs a target that is a
    // watched folder or lies in one, the items' and the sidebar's an item that lies in one; the
    // toolbar's is offered wherever an extension is present. Not offered is what has among its
    // items a watched folder itself, whose menu the extension cannot make, something beside one
    // whose path begins like its own (for "/mnt/Drive" that is "/mnt/Drive2/a"), which the
    // extension would take for its own, or what is no absolute path; the toolbar's menu is asked
    // for without them. A target that is in no watched folder is none. Looks at the file system
    // only.
    bool isOffered(MenuKind kind, const Place& place) const;

    // The menu for a place; the result's menu is there when the outcome is kDone.
    struct MenuAnswer {
        Outcome outcome = Outcome::kAbsent;
        std::optional<Menu> menu;
    };
    MenuAnswer menu(MenuKind kind, const Place& place,
                    std::chrono::milliseconds timeout = kDefaultTimeout);

    // Carries out an entry of the menu for a place, by its action. kDone: it is on its way to the
    // host. An extension that has not taken it up within the time-out will not, however late it
    // reads of it; that it takes a command up in time and then needs so long that kTimedOut is
    // untrue is all that remains, and a twentieth of a second more is waited for it. After kAbsent
    // and kFailed it may have been carried out when the extension ended meanwhile.
    Outcome run(MenuKind kind, std::string_view action, const Place& place,
                std::chrono::milliseconds timeout = kDefaultTimeout);

    // Tells that a window begins, or stops, showing a folder; of one that is not watched the
    // extension hears nothing (kNotOffered). Does not wait: kDone says that it is on its way. A
    // folder that was begun twice has to end twice, by the same path.
    //
    // What was begun until this client goes ends with it, and an extension that comes later hears
    // of it as well. What was begun until it is ended is told just once, to the extension that is
    // there.
    enum class Lifetime : bool { kUntilEnded, kUntilGone };
    Outcome beginObserving(std::string_view folder, Lifetime lifetime = Lifetime::kUntilGone);
    Outcome endObserving(std::string_view folder);
    // Waits until the extension has taken in what these two told, for a program that is about to
    // end; kDone, or the last error among its answers since the last time.
    Outcome settle(std::chrono::milliseconds timeout = kDefaultTimeout);

  private:
    class Session;
    std::unique_ptr<Session> session_;
};

} // namespace Shell
