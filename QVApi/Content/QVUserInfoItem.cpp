#include "QVApi/Content/QVUserInfoItem.h"

namespace {

constexpr auto kProperties = NS::propertiesOf<QVUserInfoItem>();
const NS::ClassRegistration kRegistration(QVUserInfoItem::kClass);

constexpr QVMapping kMapping[] = {
    {"storageMax",    "MaxStorage" },
    {"storageUsed",   "StorageUsed"},
    {"bandwidthUsed", "BwUsed"     },
    {"bandwidthMax",  "BwMax"      },
    {"plan",          "UserPlan"   },
};

constexpr std::string_view kArchived[] = {"identifier",    "storageMax",   "storageUsed",
                                          "bandwidthUsed", "bandwidthMax", "plan",
                                          "trashCount"};

NS::RefPtr<NS::Object> parseValue(const NS::RefPtr<NS::Object>& value, std::string_view key,
                                  NS::RefPtr<NS::Error>*) {
    if (key == "plan") {
        return value;
    }
    return NS::Number::numberWithLongLong(NS::longLongValue(value));
}

} // namespace

constinit const NS::Class QVUserInfoItem::kClass{
    .name = "QVUserInfoItem",
    .superclass = &QVContentItem::kClass,
    .properties = kProperties,
    .createForCoder = &qvCreateForCoder<QVUserInfoItem>,
};
constinit const QVContentClass QVUserInfoItem::kContentClass{
    .objectClass = QVUserInfoItem::kClass,
    .superclass = &QVContentItem::kContentClass,
    .mapping = kMapping,
    .archiveList = QVArchiveList::kOwn,
    .archived = kArchived,
    .parseValue = &parseValue,
    .create = &qvCreate<QVUserInfoItem>,
    .archivedProperties = &qvArchivedProperties<QVUserInfoItem>,
};

bool QVUserInfoItem::isUnlimited() const {
    const auto name = NS::cast<NS::String>(plan());
    return !name || name->containsString(*NS::str("Unlimited"));
}
