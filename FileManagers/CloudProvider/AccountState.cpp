#include "FileManagers/CloudProvider/AccountState.h"

#include <filesystem>
#include <string_view>
#include <system_error>

namespace FileManagers {

namespace {

using Status = AccountState::Status;

// Of a drive whose extension has told nothing yet.
constexpr const char* kName = "Fennmoor Cloud";

constexpr const char* kHostSilent = "The host has not answered";

// Sidebars show symbolic icons. That of an image in a theme's folders is beside it, also where the
// theme itself is not one that a file manager looks into.
std::string symbolicIcon(const Shell::ToolbarItem& item) {
    constexpr std::string_view kScalable = "/scalable/";
    const std::size_t at = item.imageFile.rfind(kScalable);
    if (at != std::string::npos) {
        const auto file =
            item.imageFile.substr(0, at) + "/symbolic/apps/" + item.imageName + "-symbolic.svg";
        std::error_code error;
        if (std::filesystem::exists(file, error)) {
            return file;
        }
    }
    return item.imageName.empty() ? AccountState::kIcon : item.imageName + "-symbolic";
}

// What keeps the drive from being as its menu says; empty when nothing does.
std::string trouble(const Drive& drive) {
    if (!drive.isAnswering()) {
        return drive.toolbarItem().name + " does not answer";
    }
    return drive.hostAnswers() ? "" : kHostSilent;
}

AccountState stateOfWaiting() {
    return {
        kName, "", AccountState::kIcon, Status::kWaiting, kHostSilent, {{kHostSilent, "", false}}};
}

AccountState stateOfDrive(Drive& drive, Look look) {
    const Shell::Place place{{}, drive.folder()};
    AccountState state;
    state.entries = look == Look::kAfresh ? drive.freshEntries(Shell::MenuKind::kToolbar, place)
                                          : drive.entries(Shell::MenuKind::kToolbar, place);
    const Shell::ToolbarItem& item = drive.toolbarItem();
    state.name = item.name;
    state.folder = place.target;
    state.icon = symbolicIcon(item);
    state.details = item.toolTip;
    if (const std::string text = trouble(drive); !text.empty()) {
        state.status = Status::kFailing;
        state.details = text;
        state.entries.push_back({text, "", false});
    }
    return state;
}

} // namespace

std::optional<AccountState> accountState(Drive& drive, Look look) {
    switch (drive.presence()) {
    case Drive::Presence::kThere:
        return stateOfDrive(drive, look);
    case Drive::Presence::kWaiting:
        return stateOfWaiting();
    default:
        return std::nullopt;
    }
}

} // namespace FileManagers
