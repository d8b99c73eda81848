#pragma once

#include "QVApi/Content/QVContentItem.h"

// Which local path a file of the service has.
class QVFSIdItem : public QVContentItem {
    QV_CONTENT_ITEM(QVFSIdItem, QVContentItem)
  public:
    // Set by the item's owner.
    NS_RECORD_PROPERTY(NS::String, path, setPath)

    NS::Ref<NS::String> description() const override;
};

// The same for a folder.
class QVFolderFSIdItem final : public QVFSIdItem {
    QV_CONTENT_ITEM(QVFolderFSIdItem, QVFSIdItem)
};
