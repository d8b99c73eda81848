#include "QVApi/Content/QVFolderListItem.h"

#include "Platform/Foundation/Exception.h"
#include "Platform/Foundation/Format.h"
#include "QVApi/Content/QVConversions.h"
#include "QVApi/Content/QVFileItem.h"
#include "QVApi/Content/QVFolderItem.h"

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

namespace {

constexpr QVMapping kMapping[] = {
    {"updateTime",     "DirUpdateTime" },
    {"name",           "Name"          },
    {"parentFolderId", "ParentFolderID"},
    {"responseType",   "ResponseType"  },
    {"folders",        "Folders"       },
    {"files",          "Files"         },
};

constexpr QVConversion kConversions[] = {
    qvListOf<QVFolderItem, QVFailedElement::kIsSkipped>("folders"),
    qvListOf<QVFileItem, QVFailedElement::kIsSkipped>("files"),
    {"updateTime", &qvLongInteger},
};

constexpr std::string_view kArchived[] = {
    "identifier",       "updateTime",   "name",  "path",    "parentFolderId",
    "directFolderLink", "responseType", "files", "folders", "encrypted"};

constexpr QVMapping kSharedMapping[] = {
    {"responseType", "ResponseType" },
    {"updateTime",   "DirUpdateTime"},
    {"folders",      "SharedFolders"},
};

// Stricter than other listings; IsNilWhenOneFolderCannotBeRead holds it.
constexpr QVConversion kSharedConversions[] = {
    qvListOf<QVSharedFolderItem, QVFailedElement::kFailsTheList>("folders"),
    qvListOf<QVSharedFileItem, QVFailedElement::kFailsTheList>("files"),
};

constexpr QVMapping kTrashMapping[] = {
    {"responseType", "ResponseType" },
    {"updateTime",   "DirUpdateTime"},
    {"folders",      "Folders"      },
    {"files",        "Files"        },
};

constexpr QVMapping kSharedUsersMapping[] = {
    {"responseType", "ResponseType" },
    {"updateTime",   "DirUpdateTime"},
    {"folders",      "SharedUsers"  },
};

NS::RefPtr<NS::Object> valueIn(const NS::Object& reply, std::string_view key) {
    const auto* const dictionary = NS::as<NS::Dictionary>(&reply);
    return dictionary != nullptr ? dictionary->objectForKey(key) : nullptr;
}

// Stores what the reply has, of whatever kind.
NS::Ref<NS::Object> folderOfSharingUser(const NS::Object& user) {
    auto folder = NS::make<QVFolderItem>();
    folder->setValue_forKey(valueIn(user, "Name"), *NS::str("name"));
    folder->setValue_forKey(valueIn(user, "SharingID"), *NS::str("identifier"));
    const auto now = NS::Date::date();
    folder->setDateModified(now);
    folder->setDateCreated(now);
    return folder;
}

NS::RefPtr<NS::Object> foldersOfSharingUsers(const NS::RefPtr<NS::Object>& value,
                                             NS::RefPtr<NS::Error>*) {
    const auto users = NS::cast<NS::Array>(value);
    const auto folders = NS::make<NS::MutableArray>();
    for (std::size_t i = 0; users && i < users->count(); ++i) {
        folders->addObject(folderOfSharingUser(*users->objectAtIndex(i)));
    }
    return folders;
}

constexpr QVConverter kFoldersOfSharingUsers{&foldersOfSharingUsers, &qvIsList, "a list"};

constexpr QVConversion kSharedUsersConversions[] = {
    {"folders", &kFoldersOfSharingUsers},
};

// The name of an entry that is of the class, else nil.
template <class Entry>
NS::RefPtr<NS::Object> nameOfA(const NS::Object& entry) {
    const auto* const named = NS::as<Entry>(&entry);
    return named != nullptr ? named->name() : nullptr;
}

// Where the name of a file or folder stands; null for what has none.
const QVEntryName* entryNameOf(const NS::Object& entry) {
    if (const auto* const file = NS::as<QVFileItem>(&entry)) {
        return &file->entryName();
    }
    const auto* const folder = NS::as<QVFolderItem>(&entry);
    return folder != nullptr ? &folder->entryName() : nullptr;
}

// The name that an entry of a listing has, or null.
const NS::Object* nameOf(const NS::Object& entry, const QVEntryName::Reading& names) {
    const QVEntryName* const name = entryNameOf(entry);
    return name != nullptr ? names.of(*name) : nullptr;
}

NS::RefPtr<NS::Object> identifierOf(const NS::Object& entry) {
    const auto* const item = NS::as<QVContentItem>(&entry);
    return item != nullptr ? item->identifier() : nullptr;
}

void append(std::vector<NS::Ref<NS::Object>>& objects, const NS::RefPtr<NS::Array>& list) {
    if (list) {
        objects.insert(objects.end(), list->begin(), list->end());
    }
}

template <class Predicate>
NS::RefPtr<NS::Object> firstWhere(const NS::Array& list, Predicate&& isWanted) {
    const auto found = std::ranges::find_if(list, isWanted);
    return found == list.end() ? NS::RefPtr<NS::Object>() : NS::RefPtr<NS::Object>(*found);
}

// Removes every entry that is equal to a file or folder: one of its own kind is when it has this
// very name. Returns how many those were.
template <class Entry>
std::size_t removeEqual(NS::MutableArray& list, const Entry& item,
                        const NS::RefPtr<NS::Object>& name) {
    return list.removeObjectsPassingTest([&](const NS::Object& each) {
        const auto* const entry = NS::as<Entry>(&each);
        return entry != nullptr ? entry->entryName().is(name.get()) : each.isEqualTo(&item);
    });
}

template <class Entry>
void insert(NS::MutableArray& list, const NS::RefPtr<Entry>& item, QVNameIndex& names) {
    const auto name = item->name();
    if (!names.replacesNone(list, name) && removeEqual(list, *item, name) == 0) {
        names.lookedInVain();
    }
    list.addObject(item);
    names.inserted(list);
}

std::size_t countOf(const NS::RefPtr<NS::Array>& list) {
    return list ? list->count() : 0;
}

} // namespace

QV_DEFINE_CONTENT_ITEM(QVFolderListItem, .mapping = kMapping, .conversions = kConversions,
                       .archiveList = QVArchiveList::kOwn, .archived = kArchived)
QV_DEFINE_CONTENT_ITEM(QVSharedFolderListItem, .mapping = kSharedMapping,
                       .conversions = kSharedConversions)
QV_DEFINE_CONTENT_ITEM(QVTrashFolderListItem, .mapping = kTrashMapping)
QV_DEFINE_CONTENT_ITEM(QVSharedUsersFolderListItem, .mapping = kSharedUsersMapping,
                       .conversions = kSharedUsersConversions)
QV_DEFINE_CONTENT_ITEM(QVStubFolderListItem, .archiveList = QVArchiveList::kInherited)

QVFolderListItem::QVFolderListItem() {
    setFiles(NS::make<NS::MutableArray>());
    setFolders(NS::make<NS::MutableArray>());
    setEncrypted(NS::Number::numberWithInt(0));
}

NS::Ref<NS::Array> QVFolderListItem::combinedItems() const {
    const auto allFolders = NS::cast<NS::Array>(folders());
    const auto allFiles = NS::cast<NS::Array>(files());
    std::vector<NS::Ref<NS::Object>> items;
    items.reserve(countOf(allFolders) + countOf(allFiles));
    append(items, allFolders);
    append(items, allFiles);
    return NS::make<NS::Array>(std::move(items));
}

NS::RefPtr<QVContentItem> QVFolderListItem::itemNamed(const NS::String& name) const {
    const auto wanted = name.lowercaseString();
    const QVEntryName::Reading names;
    const auto isWanted = [&](const NS::Ref<NS::Object>& entry) {
        const auto* const itsName = NS::as<NS::String>(nameOf(*entry, names));
        return itsName != nullptr && itsName->lowercaseEquals(*wanted);
    };
    for (const auto& list : {NS::cast<NS::Array>(folders()), NS::cast<NS::Array>(files())}) {
        const auto found = list ? firstWhere(*list, isWanted) : nullptr;
        if (found) {
            return NS::as<QVContentItem>(found);
        }
    }
    return nullptr;
}

bool QVFolderListItem::containsItemNamed(const NS::String& name) const {
    return itemNamed(name) != nullptr;
}

NS::Ref<NS::MutableArray> QVFolderListItem::itemNames() const {
    const auto allFolders = NS::cast<NS::Array>(folders());
    const auto allFiles = NS::cast<NS::Array>(files());
    auto names = NS::MutableArray::arrayWithCapacity(countOf(allFolders) + countOf(allFiles));
    const QVEntryName::Reading reading;
    for (const NS::Array* const list : {allFolders.get(), allFiles.get()}) {
        if (list != nullptr) {
            std::ranges::for_each(*list, [&](const auto& each) {
                names->addObject(const_cast<NS::Object*>(nameOf(*each, reading)));
            });
        }
    }
    return names;
}

// The list where an entry belongs.
NS::RefPtr<NS::MutableArray> QVFolderListItem::listFor(const NS::RefPtr<NS::Object>& item,
                                                       std::string_view operation) const {
    if (NS::as<QVFileItem>(item)) {
        return NS::cast<NS::MutableArray>(files());
    }
    if (NS::as<QVFolderItem>(item)) {
        return NS::cast<NS::MutableArray>(folders());
    }
    NS::Exception::raise("QVContentItem",
                         std::string(operation) +
                             ": only support QVFileItem or QVFolderItem instances.");
}

void QVFolderListItem::insertItem(const NS::RefPtr<NS::Object>& item) {
    const auto list = listFor(item, "insertItem");
    if (!list) {
        return;
    }
    if (const auto file = NS::as<QVFileItem>(item)) {
        insert(*list, file, fileNames_);
    } else {
        insert(*list, NS::as<QVFolderItem>(item), folderNames_);
    }
}

NS::RefPtr<NS::Object> QVFolderListItem::nameOfFile(const NS::Object& entry) {
    return nameOfA<QVFileItem>(entry);
}

NS::RefPtr<NS::Object> QVFolderListItem::nameOfFolder(const NS::Object& entry) {
    return nameOfA<QVFolderItem>(entry);
}

void QVFolderListItem::removeItem(const NS::RefPtr<NS::Object>& item) {
    if (const auto list = listFor(item, "removeItem")) {
        list->removeObjectIdenticalTo(*item);
    }
}

// Removes the files, then the folders, that have this text.
template <class Text>
void QVFolderListItem::removeWhere(const NS::String& wanted, Text&& textOf) {
    const auto goes = [&](const NS::Object& entry) {
        const auto text = NS::as<NS::String>(textOf(entry));
        return text != nullptr && text->isEqualToString(wanted);
    };
    for (const auto& list : {files(), folders()}) {
        if (const auto entries = NS::cast<NS::MutableArray>(list)) {
            entries->removeObjectsPassingTest(goes);
        }
    }
}

void QVFolderListItem::removeItemNamed(const NS::String& name) {
    const QVEntryName::Reading names;
    removeWhere(name, [&](const NS::Object& entry) { return nameOf(entry, names); });
}

void QVFolderListItem::removeItemWithIdentifier(const NS::String& identifier) {
    removeWhere(identifier, identifierOf);
}

bool QVFolderListItem::isEncrypted() const {
    const auto number = NS::as<NS::Number>(encrypted());
    return !number || !number->isEqualToNumber(*NS::Number::numberWithInt(0));
}

NS::Ref<NS::String> QVFolderListItem::description() const {
    return NS::stringWithFormat(
        "%@ (name=%@, time=%@, count=%lu,%lu, ...)", QVContentItem::description(), name(),
        updateTime(), countOf(NS::as<NS::Array>(folders())), countOf(NS::as<NS::Array>(files())));
}
