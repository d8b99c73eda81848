#include "QVApi/Content/QVSharingUsersItem.h"

#include "QVApi/Content/QVConversions.h"

namespace {

constexpr QVMapping kUserMapping[] = {
    {"identifier", "SharingID"},
    {"name",       "Name"     },
    {"mode",       "ShareMode"},
};

constexpr std::string_view kUserArchived[] = {"identifier", "name", "mode"};

constexpr QVMapping kUsersMapping[] = {
    {"users", "ShareWithUser"},
};

constexpr QVConversion kUsersConversions[] = {
    qvListOf<QVSharingUserItem, QVFailedElement::kFailsTheList>("users"),
};

constexpr std::string_view kUsersArchived[] = {"identifier", "users"};

} // namespace

QV_DEFINE_CONTENT_ITEM(QVSharingUserItem, .mapping = kUserMapping,
                       .archiveList = QVArchiveList::kOwn, .archived = kUserArchived)
QV_DEFINE_CONTENT_ITEM(QVSharingUsersItem, .mapping = kUsersMapping,
                       .conversions = kUsersConversions, .archiveList = QVArchiveList::kOwn,
                       .archived = kUsersArchived)

NS::RefPtr<QVSharingUserItem> QVSharingUsersItem::itemNamed(const NS::String& name) const {
    const auto list = NS::cast<NS::Array>(users());
    if (!list) {
        return nullptr;
    }
    for (const NS::Ref<NS::Object>& each : *list) {
        auto user = NS::as<QVSharingUserItem>(each);
        const auto itsName = user ? NS::as<NS::String>(user->name()) : nullptr;
        if (itsName && itsName->isEqualToString(name)) {
            return user;
        }
    }
    return nullptr;
}
