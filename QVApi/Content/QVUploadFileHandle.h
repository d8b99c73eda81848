#pragma once

#include "Platform/Foundation/Number.h"
#include "QVApi/Content/QVContentItem.h"

// The service's handle for the upload of one file.
class QVUploadFileHandle final : public QVContentItem {
    QV_CONTENT_ITEM(QVUploadFileHandle, QVContentItem)
  public:
    // The local file; set by the item's owner, as are isUploading and the size.
    NS_RECORD_PROPERTY(NS::String, path, setPath)
    NS_RECORD_PROPERTY(NS::String, tempLocation, setTempLocation)
    NS_RECORD_PROPERTY(NS::Number, isUploading, setIsUploading)
    NS_RECORD_PROPERTY(NS::Number, requireHash, setRequireHash)
    NS_RECORD_PROPERTY(NS::Number, requireHashOnly, setRequireHashOnly)
    // Not archived.
    NS_RECORD_PROPERTY(NS::Number, size, setSize)

    NS::Ref<NS::String> description() const override;
};
