#include "QVApi/Content/QVNotificationsItem.h"

namespace {

constexpr QVMapping kMapping[] = {
    {"list", "Notification"},
};

} // namespace

QV_DEFINE_CONTENT_ITEM(QVNotificationsItem, .mapping = kMapping)
