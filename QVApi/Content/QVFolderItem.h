#pragma once

#include "Platform/Foundation/Number.h"
#include "QVApi/Content/QVContentItem.h"
#include "QVApi/Content/QVEntryName.h"

// A folder of the drive as the service reports it.
class QVFolderItem : public QVContentItem {
    QV_CONTENT_ITEM(QVFolderItem, QVContentItem)
  public:
    QVFolderItem() { setEncrypted(NS::Number::numberWithInt(0)); }

    // Decomposed (NFD) when it came from a reply.
    NS_RECORD_PROPERTY_IN(QVEntryName, NS::String, name, setName)
    NS_RECORD_PROPERTY(NS::Date, dateCreated, setDateCreated)
    NS_RECORD_PROPERTY(NS::Date, dateModified, setDateModified)
    // 0 for a folder that is not encrypted.
    NS_RECORD_PROPERTY(NS::Number, encrypted, setEncrypted)

    // Two folders are equal when their names are the very same object, or both have none; equal
    // texts do not count. With any other record the root's rule decides.
    bool isEqualTo(const NS::Object* other) const final;
    // The name where it stands.
    const QVEntryName& entryName() const noexcept { return name_; }
    NS::Ref<NS::String> description() const override;
};

// A folder in a share.
class QVSharedFolderItem final : public QVFolderItem {
    QV_CONTENT_ITEM(QVSharedFolderItem, QVFolderItem)
  public:
    NS_RECORD_PROPERTY(NS::Number, shareMode, setShareMode)
};

// A folder's properties and link.
class QVFolderInfoItem final : public QVFolderItem {
    QV_CONTENT_ITEM(QVFolderInfoItem, QVFolderItem)
  public:
    // Set by the item's owner.
    NS_RECORD_PROPERTY(NS::String, path, setPath)
    NS_RECORD_PROPERTY(NS::String, link, setLink)
    NS_RECORD_PROPERTY(NS::String, folderDescription, setFolderDescription)
    NS_RECORD_PROPERTY(NS::String, access, setAccess)
};
