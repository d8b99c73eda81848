#include "FileManagers/CloudProvider/SidebarEntry.h"

#include <vector>

namespace FileManagers {

namespace {

// What the programs that show the menu put its actions under.
constexpr const char* kActions = "cloudprovider";

// Kept for ever; Account says why.
CloudProvidersProviderExporter* newProvider(GDBusConnection* bus) {
    static auto* const providers = new std::vector<CloudProvidersProviderExporter*>;
    auto* const provider =
        cloud_providers_provider_exporter_new(bus, SidebarEntry::kBusName, SidebarEntry::kObject);
    cloud_providers_provider_exporter_set_name(provider, "Quorvane");
    return providers->emplace_back(provider);
}

} // namespace

SidebarEntry::SidebarEntry(Drive& drive, GDBusConnection* bus)
    : drive_(drive), provider_(newProvider(bus)),
      menu_(kActions, [this](const Shell::MenuEntry& entry) { pick(entry); }),
      reads_(bus, [this] { refresh(Look::kAfresh); }), notifications_(bus) {
    drive_.setOnChange([this] { refresh(Look::kKept); });
    drive_.setOnNotDone([this](const NotDone& notDone) { notifications_.show(notDone); });
    refresh(Look::kKept);
}

SidebarEntry::~SidebarEntry() {
    drive_.setOnChange(nullptr);
    drive_.setOnNotDone(nullptr);
}

void SidebarEntry::refresh(Look look) {
    if (const auto state = accountState(drive_, look)) {
        show(*state);
    } else {
        account_.reset();
        menu_.show({});
    }
}

// One that has learned of its drive is another account, as its line is to open another folder.
void SidebarEntry::show(const AccountState& state) {
    if (account_ && folder_ != state.folder) {
        account_.reset();
    }
    menu_.show(state.entries);
    if (!account_) {
        folder_ = state.folder;
        account_.emplace(provider_, "Drive" + std::to_string(++accounts_), menu_);
    }
    account_->show(state);
}

void SidebarEntry::pick(const Shell::MenuEntry& entry) {
    drive_.pick(Shell::MenuKind::kToolbar, entry, {{}, folder_});
    refresh(Look::kKept); // which shows whether it answers
}

} // namespace FileManagers
