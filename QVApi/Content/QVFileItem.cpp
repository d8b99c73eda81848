#include "QVApi/Content/QVFileItem.h"

#include "Platform/Foundation/Format.h"
#include "QVApi/Content/QVConversions.h"

namespace {

constexpr QVMapping kMapping[] = {
    {"identifier",         "FileId"            },
    {"name",               "Name"              },
    {"size",               "Size"              },
    {"requireCompression", "RequireCompression"},
    {"dateModified",       "DateModified"      },
};

constexpr QVConversion kConversions[] = {
    {"dateModified",       &qvSecondsToDate},
    {"size",               &qvLongInteger  },
    {"requireCompression", &qvLongInteger  },
    {"name",               &qvCanonicalName},
};

constexpr std::string_view kArchived[] = {"identifier", "name", "size", "requireCompression",
                                          "dateModified"};

// The service tells of compression for a user's own files only.
constexpr QVMapping kSharedMapping[] = {
    {"identifier",   "FileId"      },
    {"name",         "Name"        },
    {"size",         "Size"        },
    {"dateModified", "DateModified"},
    {"shareMode",    "ShareMode"   },
};

constexpr std::string_view kSharedArchived[] = {"shareMode"};

constexpr QVMapping kInfoMapping[] = {
    {"identifier",      "FileId"       },
    {"name",            "Name"         },
    {"size",            "Size"         },
    {"dateModified",    "DateModified" },
    {"link",            "Link"         },
    {"downloadLink",    "DownloadLink" },
    {"streamingLink",   "StreamingLink"},
    {"access",          "Access"       },
    {"fileDescription", "Description"  },
};

constexpr std::string_view kInfoArchived[] = {
    "path", "link", "downloadLink", "streamingLink", "fileDescription", "price", "access"};

} // namespace

QV_DEFINE_CONTENT_ITEM(QVFileItem, .mapping = kMapping, .conversions = kConversions,
                       .archiveList = QVArchiveList::kOwn, .archived = kArchived)
QV_DEFINE_CONTENT_ITEM(QVSharedFileItem, .mapping = kSharedMapping,
                       .archiveList = QVArchiveList::kExtended, .archived = kSharedArchived)
QV_DEFINE_CONTENT_ITEM(QVFileInfoItem, .mapping = kInfoMapping,
                       .archiveList = QVArchiveList::kExtended, .archived = kInfoArchived)

bool QVFileItem::isEqualTo(const NS::Object* other) const {
    if (const auto* const file = NS::as<QVFileItem>(other)) {
        return file->entryName().is(name().get());
    }
    return QVContentItem::isEqualTo(other);
}

NS::Ref<NS::String> QVFileItem::description() const {
    return NS::stringWithFormat("%@ (name=%@, size=%@, id=%@, ...)", QVContentItem::description(),
                                name(), size(), identifier());
}
