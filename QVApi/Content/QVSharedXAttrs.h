#pragma once

#include "QVApi/Content/QVContentItem.h"

// The extended attributes of shared files, by path; filled by its owner.
class QVSharedXAttrs final : public QVSynchedItem {
    QV_CONTENT_ITEM(QVSharedXAttrs, QVSynchedItem)
  public:
    QVSharedXAttrs() {
        setIdentifier(qvDefaultIdentifier());
        setXattrsByPath(NS::make<NS::MutableDictionary>());
    }

    NS_RECORD_PROPERTY(NS::MutableDictionary, xattrsByPath, setXattrsByPath)
};
