#pragma once

#include "Platform/Foundation/Data.h"
#include "QVApi/Content/QVContentItem.h"

// A file's thumbnail; filled by its owner.
class QVFileThumbnailItem final : public QVContentItem {
    QV_CONTENT_ITEM(QVFileThumbnailItem, QVContentItem)
  public:
    // The image as a file of its kind would hold it.
    NS_RECORD_PROPERTY(NS::Data, data, setData)
};
