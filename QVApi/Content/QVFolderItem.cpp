#include "QVApi/Content/QVFolderItem.h"

#include "Platform/Foundation/Format.h"
#include "QVApi/Content/QVConversions.h"

namespace {

// A folder's key ends in "ID", a file's in "Id": the service spells them so.
constexpr QVMapping kMapping[] = {
    {"identifier",   "FolderID"    },
    {"name",         "Name"        },
    {"encrypted",    "Encrypted"   },
    {"dateCreated",  "DateCreated" },
    {"dateModified", "DateModified"},
};

constexpr QVConversion kConversions[] = {
    {"dateModified", &qvSecondsToDate},
    {"dateCreated",  &qvSecondsToDate},
    {"encrypted",    &qvInt          },
    {"name",         &qvCanonicalName},
};

constexpr std::string_view kArchived[] = {"identifier", "name", "dateCreated", "dateModified",
                                          "encrypted"};

constexpr QVMapping kSharedMapping[] = {
    {"identifier",   "FolderID"    },
    {"name",         "Name"        },
    {"encrypted",    "Encrypted"   },
    {"dateCreated",  "DateCreated" },
    {"dateModified", "DateModified"},
    {"shareMode",    "ShareMode"   },
};

constexpr std::string_view kSharedArchived[] = {"shareMode"};

constexpr QVMapping kInfoMapping[] = {
    {"identifier",        "FolderID"    },
    {"name",              "Name"        },
    {"encrypted",         "Encrypted"   },
    {"dateCreated",       "DateCreated" },
    {"dateModified",      "DateModified"},
    {"link",              "Link"        },
    {"folderDescription", "Description" },
    {"access",            "Access"      },
};

constexpr std::string_view kInfoArchived[] = {"path", "link", "folderDescription", "access"};

} // namespace

QV_DEFINE_CONTENT_ITEM(QVFolderItem, .mapping = kMapping, .conversions = kConversions,
                       .archiveList = QVArchiveList::kOwn, .archived = kArchived)
QV_DEFINE_CONTENT_ITEM(QVSharedFolderItem, .mapping = kSharedMapping,
                       .archiveList = QVArchiveList::kExtended, .archived = kSharedArchived)
QV_DEFINE_CONTENT_ITEM(QVFolderInfoItem, .mapping = kInfoMapping,
                       .archiveList = QVArchiveList::kExtended, .archived = kInfoArchived)

bool QVFolderItem::isEqualTo(const NS::Object* other) const {
    if (const auto* const folder = NS::as<QVFolderItem>(other)) {
        return folder->entryName().is(name().get());
    }
    return QVContentItem::isEqualTo(other);
}

NS::Ref<NS::String> QVFolderItem::description() const {
    return NS::stringWithFormat("%@ (name=%@, encrypted=%@, id=%@, ...)",
                                QVContentItem::description(), name(), encrypted(), identifier());
}
