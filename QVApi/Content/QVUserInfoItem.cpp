#include "QVApi/Content/QVUserInfoItem.h"

#include "QVApi/Content/QVConversions.h"

namespace {

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

constexpr QVConversion kConversions[] = {
    {"plan",                  &qvPassThrough},
    {QVConversion::kAnyOther, &qvLongInteger},
};

} // namespace

QV_DEFINE_CONTENT_ITEM(QVUserInfoItem, .mapping = kMapping, .conversions = kConversions,
                       .archiveList = QVArchiveList::kOwn, .archived = kArchived)

bool QVUserInfoItem::isUnlimited() const {
    const auto name = NS::cast<NS::String>(plan());
    return !name || name->containsString(*NS::str("Unlimited"));
}
