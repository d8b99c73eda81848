#include "Programs/Finder/Commands.h"

#include "Programs/Finder/MenuText.h"

#include <nlohmann/json.hpp>

using Json = nlohmann::ordered_json;
using Shell::Outcome;
using std::chrono::milliseconds;

namespace {

constexpr milliseconds kPatience{2000};
constexpr std::size_t kItemsPerMillisecond = 10;

Json statusJson(const Shell::FinderClient& client) {
    const Shell::ToolbarItem& item = client.toolbarItem();
    return {
        {"running",        true                                                 },
        {"watchedFolders", client.watchedFolders()                              },
        {"toolbarItem",
         {{"name", item.name},
          {"toolTip", item.toolTip},
          {"image", item.imageName},
          {"imageFile", item.imageFile.empty() ? Json() : Json(item.imageFile)}}}
    };
}

std::string statusText(const Shell::FinderClient& client) {
    std::string text = "The extension is running.\n";
    for (const std::string& folder : client.watchedFolders()) {
        text += "Watched folder: " + printable(folder) + "\n";
    }
    const Shell::ToolbarItem& item = client.toolbarItem();
    return text + "Toolbar item: " + printable(item.name) + " (" + printable(item.toolTip) + ")\n";
}

} // namespace

milliseconds Commands::timeoutFor(const Shell::Place& place) const {
    return timeout_.value_or(kPatience + milliseconds(place.items.size() / kItemsPerMillisecond));
}

void Commands::fail(Outcome outcome, const std::string& what) const {
    switch (outcome) {
    case Outcome::kAbsent:
        throw UserError("the extension is not running" +
                        (client_.error().empty() ? "" : ": " + client_.error()));
    case Outcome::kTimedOut:
        throw UserError("the extension does not answer; nothing was done");
    case Outcome::kNotInMenu:
    case Outcome::kNotOffered:
        throw UserError("\"" + what + "\" is not in the menu here");
    case Outcome::kTooLarge:
        throw UserError("the selection is too large to be asked about at once");
    default:
        throw UserError("the extension failed: " + client_.error());
    }
}

void Commands::requirePresence() {
    if (!client_.waitUntilKnown(timeoutFor({}))) {
        fail(Outcome::kTimedOut, "");
    }
    if (!client_.isPresent()) {
        fail(Outcome::kAbsent, "");
    }
}

void Commands::status(Format format) {
    requirePresence();
    if (format == Format::kJson) {
        output_ << statusJson(client_).dump(-1, ' ', false, Json::error_handler_t::replace) << '\n';
    } else {
        output_ << statusText(client_);
    }
}

Shell::Menu Commands::menuFor(const MenuRequest& request) {
    requirePresence();
    auto answer = client_.menu(request.kind, request.place, timeoutFor(request.place));
    if (answer.outcome == Outcome::kNotOffered) {
        return {client_.toolbarItem().name, {}};
    }
    if (!answer.menu) {
        fail(answer.outcome, "");
    }
    return std::move(*answer.menu);
}

void Commands::menu(const MenuRequest& request, Format format, bool onTerminal) {
    const Shell::Menu shown = menuFor(request);
    if (format == Format::kJson) {
        output_ << jsonOf(shown) << '\n';
    } else {
        output_ << textOf(shown, onTerminal ? Dimming::kTerminal : Dimming::kNone);
        if (shown.entries.empty() && onTerminal) {
            output_ << "(no entries here)\n";
        }
    }
}

void Commands::pick(const MenuRequest& request, const std::string& title, Format format) {
    const Shell::Menu shown = menuFor(request);
    const Shell::MenuEntry* const entry = entryTitled(shown, title);
    if (entry == nullptr) {
        fail(Outcome::kNotInMenu, title);
    }
    if (!entry->enabled || entry->action.empty()) {
        throw UserError("\"" + title + "\" cannot be picked");
    }
    const Outcome outcome =
        client_.run(request.kind, entry->action, request.place, timeoutFor(request.place));
    if (outcome != Outcome::kDone) {
        fail(outcome, title);
    }
    if (format == Format::kJson) {
        output_ << jsonOf(*entry) << '\n';
    }
}

void Commands::requireTold(Outcome outcome, const std::string& folder) {
    if (outcome == Outcome::kDone) {
        outcome = client_.settle(timeoutFor({}));
    }
    if (outcome == Outcome::kNotOffered) {
        throw UserError("not a folder of the drive: " + folder);
    }
    if (outcome != Outcome::kDone) {
        fail(outcome, folder);
    }
}

void Commands::beginObserving(const std::string& folder) {
    requirePresence();
    // This process ends at once; the folder stays observed until it is told otherwise.
    requireTold(client_.beginObserving(folder, Shell::FinderClient::Lifetime::kUntilEnded), folder);
}

void Commands::endObserving(const std::string& folder) {
    requirePresence();
    requireTold(client_.endObserving(folder), folder);
}
