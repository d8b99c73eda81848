#include "QVApi/Content/QVFSIdItem.h"

#include "Platform/Foundation/Format.h"

namespace {

constexpr QVMapping kMapping[] = {
    {"identifier", "FileId"},
};

constexpr std::string_view kArchived[] = {"identifier", "path"};

// Not "FolderID", as everywhere else: the service spells it so here.
constexpr QVMapping kFolderMapping[] = {
    {"identifier", "FolderId"},
};

} // namespace

QV_DEFINE_CONTENT_ITEM(QVFSIdItem, .mapping = kMapping, .archiveList = QVArchiveList::kOwn,
                       .archived = kArchived)
QV_DEFINE_CONTENT_ITEM(QVFolderFSIdItem, .mapping = kFolderMapping)

NS::Ref<NS::String> QVFSIdItem::description() const {
    return NS::stringWithFormat("%@ (id=%@, path=%@)", QVContentItem::description(), identifier(),
                                path());
}
