#include "FileManagers/CloudProvider/Account.h"

#include <string_view>

namespace FileManagers {

namespace {

using Status = AccountState::Status;

CloudProvidersAccountStatus statusOf(Status status) {
    switch (status) {
    case Status::kWaiting:
        return CLOUD_PROVIDERS_ACCOUNT_STATUS_SYNCING;
    case Status::kFailing:
        return CLOUD_PROVIDERS_ACCOUNT_STATUS_ERROR;
    default:
        return CLOUD_PROVIDERS_ACCOUNT_STATUS_IDLE;
    }
}

bool isText(const std::string& bytes) {
    return g_utf8_validate(bytes.c_str(), -1, nullptr) != FALSE;
}

// Without an icon there would be no line. Text that came over the bus is UTF-8; a path may not be.
OwnedObject<GIcon> iconOf(const std::string& icon) {
    GIcon* const made = isText(icon) ? g_icon_new_for_string(icon.c_str(), nullptr) : nullptr;
    return OwnedObject<GIcon>(made != nullptr ? made : g_themed_icon_new(AccountState::kIcon));
}

} // namespace

std::string accountPath(const std::string& folder) {
    constexpr const char* kDigits = "0123456789ABCDEF";
    const std::string_view special = "%#?";
    const bool isAllText = isText(folder);
    std::string path;
    for (const char character : folder) {
        const auto byte = static_cast<unsigned char>(character);
        if (special.find(character) != std::string_view::npos || byte < 0x20 ||
            (byte >= 0x7F && !isAllText)) {
            path.append({'%', kDigits[byte / 16], kDigits[byte % 16]});
        } else {
            path += character;
        }
    }
    return path;
}

Account::Account(CloudProvidersProviderExporter* provider, const std::string& id,
                 const EntriesModel& menu)
    : provider_(provider), account_(cloud_providers_account_exporter_new(provider, id.c_str())) {
    cloud_providers_account_exporter_set_action_group(account_.get(), menu.actions());
    cloud_providers_account_exporter_set_menu_model(account_.get(), menu.menu());
}

Account::~Account() {
    if (completion_ != 0) {
        (void)g_source_remove(completion_); // it is there, as it forgets itself when it has run
    }
    cloud_providers_provider_exporter_remove_account(provider_, account_.get());
}

void Account::show(const AccountState& state) {
    CloudProvidersAccountExporter* const account = account_.get();
    cloud_providers_account_exporter_set_name(account, state.name.c_str());
    const std::string home = g_get_home_dir();
    cloud_providers_account_exporter_set_path(
        account, accountPath(state.folder.empty() ? home : state.folder).c_str());
    cloud_providers_account_exporter_set_icon(account, iconOf(state.icon).get());
    cloud_providers_account_exporter_set_status_details(account, state.details.c_str());
    const bool isFirst = status_ == CLOUD_PROVIDERS_ACCOUNT_STATUS_INVALID;
    status_ = statusOf(state.status);
    if (!isFirst && completion_ == 0) {
        cloud_providers_account_exporter_set_status(account, status_);
    } else if (isFirst) {
        completion_ = g_idle_add_full(G_PRIORITY_LOW, &complete, this, nullptr);
    }
}

// A sidebar makes its line as soon as an account has a status, and takes the icon that it has by
// then for good. So the status goes out last, in a message after that of all else, which the
// library sends from the loop.
gboolean Account::complete(gpointer self) {
    auto* const account = static_cast<Account*>(self);
    account->completion_ = 0;
    cloud_providers_account_exporter_set_status(account->account_.get(), account->status_);
    return G_SOURCE_REMOVE;
}

} // namespace FileManagers
