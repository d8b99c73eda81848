#pragma once

#include "QVApi/Content/QVContentItem.h"

// The account's notifications, as the service words them. Nothing but its time is archived.
class QVNotificationsItem final : public QVContentItem {
    QV_CONTENT_ITEM(QVNotificationsItem, QVContentItem)
  public:
    // The reply's own list, not a copy of it.
    NS_RECORD_PROPERTY(NS::MutableArray, list, setList)
};
