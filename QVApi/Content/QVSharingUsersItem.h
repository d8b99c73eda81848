#pragma once

#include "QVApi/Content/QVContentItem.h"

// A user that something is shared with.
class QVSharingUserItem final : public QVContentItem {
    QV_CONTENT_ITEM(QVSharingUserItem, QVContentItem)
  public:
    NS_RECORD_PROPERTY(NS::String, name, setName)
    NS_RECORD_PROPERTY(NS::String, mode, setMode)
};

// The users that a file or folder is shared with.
class QVSharingUsersItem final : public QVContentItem {
    QV_CONTENT_ITEM(QVSharingUsersItem, QVContentItem)
  public:
    // Of QVSharingUserItem. A reply with one user that cannot be read makes no item at all.
    NS_RECORD_PROPERTY(NS::Array, users, setUsers)

    // The first user of exactly this name, or nil. A name that is no text is no user's.
    NS::RefPtr<QVSharingUserItem> itemNamed(const NS::String& name) const;
};
