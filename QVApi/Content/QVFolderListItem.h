#pragma once

#include "Platform/Foundation/Number.h"
#include "QVApi/Content/QVContentItem.h"
#include "QVApi/Content/QVNameIndex.h"

// The contents of one folder, as the service lists them: the folder's own data, its folders and its
// files.
//
// The two lists are the owner's to change as well, and so are the names of what they hold; hence
// every operation looks at the entries themselves, once each, but for insertions in a row. Names
// are compared literally, without Unicode normalisation: an entry from a reply is found by its
// decomposed name only. What is no file or folder, or has a name that is no text, has no name.
class QVFolderListItem : public QVContentItem {
    QV_CONTENT_ITEM(QVFolderListItem, QVContentItem)
  public:
    // With two empty lists, not encrypted.
    QVFolderListItem();

    // Set by the item's owner, as are the direct link and whether it is encrypted.
    NS_RECORD_PROPERTY(NS::String, path, setPath)
    NS_RECORD_PROPERTY(NS::Number, updateTime, setUpdateTime)
    // As the reply has it: not decomposed, unlike the entries'.
    NS_RECORD_PROPERTY(NS::String, name, setName)
    NS_RECORD_PROPERTY(NS::String, parentFolderId, setParentFolderId)
    NS_RECORD_PROPERTY(NS::String, directFolderLink, setDirectFolderLink)
    NS_RECORD_PROPERTY(NS::Number, responseType, setResponseType)
    NS_RECORD_PROPERTY(NS::Number, encrypted, setEncrypted)
    // Of QVFileItem and QVFolderItem; a reply's entries that cannot be read are left out.
    NS_RECORD_PROPERTY(NS::MutableArray, files, setFiles)
    NS_RECORD_PROPERTY(NS::MutableArray, folders, setFolders)

    // The operations on the lists raise NSInvalidArgumentException for one that is no list, or
    // cannot be changed when it is to be; one that is absent holds nothing and takes nothing in.

    // A new array: the folders, then the files.
    NS::Ref<NS::Array> combinedItems() const;
    // The first entry of combinedItems() whose name is this one but for letter case, or nil.
    NS::RefPtr<QVContentItem> itemNamed(const NS::String& name) const;
    bool containsItemNamed(const NS::String& name) const;
    // A new array of the names of combinedItems(). Raises NSInvalidArgumentException for an entry
    // without one.
    NS::Ref<NS::MutableArray> itemNames() const;

    // Puts a file or folder at the end of its list, in place of every one there that is equal to it
    // by isEqualTo(): that has the very same name object. Raises an exception named "QVContentItem"
    // for anything else, and nil. After a few in a row, one with a name that no entry has takes the
    // same time in any listing (QVNameIndex).
    void insertItem(const NS::RefPtr<NS::Object>& item);
    // Removes this very file or folder from its list. Raises as insertItem() does.
    void removeItem(const NS::RefPtr<NS::Object>& item);
    // Remove every file and folder of exactly this name, letter case included, or this identifier.
    void removeItemNamed(const NS::String& name);
    void removeItemWithIdentifier(const NS::String& identifier);

    // False only for the number 0: a listing that does not say counts as encrypted.
    bool isEncrypted() const;

    NS::Ref<NS::String> description() const override;

  private:
    NS::RefPtr<NS::MutableArray> listFor(const NS::RefPtr<NS::Object>& item,
                                         std::string_view operation) const;
    template <class Text>
    void removeWhere(const NS::String& wanted, Text&& textOf);

    static NS::RefPtr<NS::Object> nameOfFile(const NS::Object& entry);
    static NS::RefPtr<NS::Object> nameOfFolder(const NS::Object& entry);
    QVNameIndex fileNames_{&nameOfFile};
    QVNameIndex folderNames_{&nameOfFolder};
};

// What is shared with the user. Unlike elsewhere, one entry that cannot be read voids the listing.
class QVSharedFolderListItem final : public QVFolderListItem {
    QV_CONTENT_ITEM(QVSharedFolderListItem, QVFolderListItem)
};

// The trash.
class QVTrashFolderListItem final : public QVFolderListItem {
    QV_CONTENT_ITEM(QVTrashFolderListItem, QVFolderListItem)
};

// The users who share something, as folders of their names that are dated now.
class QVSharedUsersFolderListItem final : public QVFolderListItem {
    QV_CONTENT_ITEM(QVSharedUsersFolderListItem, QVFolderListItem)
};

// A listing that stands for one that was not asked for.
class QVStubFolderListItem final : public QVFolderListItem {
    QV_CONTENT_ITEM(QVStubFolderListItem, QVFolderListItem)
};
