#pragma once

#include "Platform/Foundation/Number.h"
#include "QVApi/Content/QVContentItem.h"

// The service's answer to one uploaded part of a file. Nothing but its time is archived.
class QVChunkUploadResult final : public QVContentItem {
    QV_CONTENT_ITEM(QVChunkUploadResult, QVContentItem)
  public:
    NS_RECORD_PROPERTY(NS::Number, bytesWritten, setBytesWritten)

    NS::Ref<NS::String> description() const override;
};
