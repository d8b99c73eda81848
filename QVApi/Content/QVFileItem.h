#pragma once

#include "Platform/Foundation/Number.h"
#include "QVApi/Content/QVContentItem.h"
#include "QVApi/Content/QVEntryName.h"

// A file of the drive as the service reports it.
class QVFileItem : public QVContentItem {
    QV_CONTENT_ITEM(QVFileItem, QVContentItem)
  public:
    // Decomposed (NFD) when it came from a reply.
    NS_RECORD_PROPERTY_IN(QVEntryName, NS::String, name, setName)
    // Bytes.
    NS_RECORD_PROPERTY(NS::Number, size, setSize)
    NS_RECORD_PROPERTY(NS::Date, dateModified, setDateModified)
    NS_RECORD_PROPERTY(NS::Number, requireCompression, setRequireCompression)

    // Two files are equal when their names are the very same object, or both have none; equal texts
    // do not count. With any other record the root's rule decides.
    bool isEqualTo(const NS::Object* other) const final;
    // The name where it stands.
    const QVEntryName& entryName() const noexcept { return name_; }
    NS::Ref<NS::String> description() const override;
};

// A file in a share.
class QVSharedFileItem final : public QVFileItem {
    QV_CONTENT_ITEM(QVSharedFileItem, QVFileItem)
  public:
    NS_RECORD_PROPERTY(NS::Number, shareMode, setShareMode)
};

// A file's properties and links.
class QVFileInfoItem final : public QVFileItem {
    QV_CONTENT_ITEM(QVFileInfoItem, QVFileItem)
  public:
    // Set by the item's owner, as is the price.
    NS_RECORD_PROPERTY(NS::String, path, setPath)
    NS_RECORD_PROPERTY(NS::String, link, setLink)
    NS_RECORD_PROPERTY(NS::String, streamingLink, setStreamingLink)
    NS_RECORD_PROPERTY(NS::String, downloadLink, setDownloadLink)
    NS_RECORD_PROPERTY(NS::String, fileDescription, setFileDescription)
    NS_RECORD_PROPERTY(NS::String, price, setPrice)
    NS_RECORD_PROPERTY(NS::String, access, setAccess)
};
