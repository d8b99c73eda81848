#pragma once

#include "Platform/Foundation/Error.h"
#include "Platform/Foundation/Number.h"
#include "QVApi/Content/QVContentItem.h"

#include <cstdint>

// How far the transfer of one file's data has come; filled by its owner.
class QVBinaryDataDescriptorItem final : public QVContentItem {
    QV_CONTENT_ITEM(QVBinaryDataDescriptorItem, QVContentItem)
  public:
    NS_RECORD_PROPERTY(NS::Number, completedBytes, setCompletedBytes)
    // 0 as long as it is not known.
    NS_RECORD_PROPERTY(NS::Number, totalBytes, setTotalBytes)
    // The local file.
    NS_RECORD_PROPERTY(NS::String, path, setPath)
    // An archive without it cannot be restored.
    NS_RECORD_SCALAR(bool, encrypted, setEncrypted)
    // Why the transfer failed, if it did; not archived.
    NS_RECORD_PROPERTY(NS::Error, error, setError)

    // Both raise NSInvalidArgumentException for counts that are no numbers.

    // Whether that many bytes from the beginning can be read. A finished transfer has all that
    // there will be, and is ready for any count.
    bool isBytesReady(std::uint64_t count) const;
    // Whether the two counts are the same number.
    bool isCompleted() const;

    NS::Ref<NS::String> description() const override;
};
