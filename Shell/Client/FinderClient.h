#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <span>
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
};

struct Menu {
    std::string title;
    std::vector<MenuEntry> entries; // in the order in which they are shown
};

// What a menu is about. Absolute paths in the bytes of the file system, as the file manager has
// them: symbolic links and "." and ".." may be in them.
struct Place {
    std::vector<std::string> items; // selected, in order
    std::string target; // the folder whose window or background is meant; empty for none
};

// How a question or a command ended.
enum class Outcome : std::uint8_t {
    kDone,
    kNotOffered, // not a place for that menu; see isOffered()
    kNotInMenu,  // the entry is not, or no longer, in the menu, or disabled
    kAbsent,     // no extension is running, or it is still starting
    kTimedOut,   // no answer in time; a command is not carried out later either
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
    // Takes in what has come, without waiting. onChange is called from here, and from questions.
    void serve();
    // Called when watched folders, toolbar item, generation or presence have changed.
    void setOnChange(std::function<void()> onChange);

    // Waits until what the extension says of itself is known, or until it is known to be absent;
    // false when neither was so in time.
    bool waitUntilKnown(std::chrono::milliseconds timeout = kDefaultTimeout);
    // True when an extension is on the bus and has said what it watches.
    bool isPresent() const noexcept;
    // Changes whenever the menu of a place may have changed; never 0 while present.
    std::uint64_t generation() const noexcept;
    // Absolute paths without a slash at the end.
    const std::vector<std::string>& watchedFolders() const noexcept;
    const ToolbarItem& toolbarItem() const noexcept;
    // What went wrong last, for a person; empty when nothing has.
    const std::string& error() const noexcept;

    // The path of the folder with symbolic links resolved, when that is a watched folder or lies in
    // one, compared by components; else nothing.
    std::optional<std::string> watchedFolder(std::string_view folder) const;

    // Whether the menu of a kind can be asked for a place. The container's needs a target that is a
    // watched folder or lies in one, the items' and the sidebar's an item that lies in one; the
    // toolbar's is offered everywhere. None is offered when a watched folder itself is selected,
    // whose menu the extension cannot make, or something beside one whose path begins like its own
    // (for "/mnt/Drive" that is "/mnt/Drive2/a"), which the extension would take for its own; the
    // toolbar's is then asked for without that.
    bool isOffered(MenuKind kind, const Place& place) const;

    // The menu for a place; the result's menu is there when the outcome is kDone.
    struct MenuAnswer {
        Outcome outcome = Outcome::kAbsent;
        std::optional<Menu> menu;
    };
    MenuAnswer menu(MenuKind kind, const Place& place,
                    std::chrono::milliseconds timeout = kDefaultTimeout);

    // Carries out an entry of the menu for a place, by its action. When the answer does not come in
    // time the extension will not carry it out later.
    Outcome run(MenuKind kind, std::string_view action, const Place& place,
                std::chrono::milliseconds timeout = kDefaultTimeout);

    // Tells that a window begins, or stops, showing a folder; of one that is not watched the
    // extension hears nothing. Does not wait. A folder that was begun twice has to end twice.
    //
    // What was begun until this client goes ends with it, and an extension that comes later hears
    // of it as well. What was begun until it is ended is told just once, to the extension that is
    // there.
    enum class Lifetime : bool { kUntilEnded, kUntilGone };
    Outcome beginObserving(std::string_view folder, Lifetime lifetime = Lifetime::kUntilGone);
    Outcome endObserving(std::string_view folder);
    // Waits until the extension has taken in what these two told: the worst of its answers.
    Outcome settle(std::chrono::milliseconds timeout = kDefaultTimeout);

  private:
    class Session;
    std::unique_ptr<Session> session_;
};

} // namespace Shell
