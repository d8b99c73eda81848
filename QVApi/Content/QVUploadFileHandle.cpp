#include "QVApi/Content/QVUploadFileHandle.h"

#include "Platform/Foundation/Format.h"

namespace {

constexpr QVMapping kMapping[] = {
    {"tempLocation",    "TempLocation"   },
    {"requireHash",     "RequireHash"    },
    {"requireHashOnly", "RequireHashOnly"},
};

// Without the size; LosesItsSizeInTheArchive holds it.
constexpr std::string_view kArchived[] = {"identifier",   "isUploading", "path",
                                          "tempLocation", "requireHash", "requireHashOnly"};

} // namespace

QV_DEFINE_CONTENT_ITEM(QVUploadFileHandle, .mapping = kMapping, .archiveList = QVArchiveList::kOwn,
                       .archived = kArchived)

NS::Ref<NS::String> QVUploadFileHandle::description() const {
    return NS::stringWithFormat("%@ (id=%@, path=%@, temp=%@, ...)", QVContentItem::description(),
                                identifier(), path(), tempLocation());
}
