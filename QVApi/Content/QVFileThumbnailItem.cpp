#include "QVApi/Content/QVFileThumbnailItem.h"

namespace {

constexpr std::string_view kArchived[] = {"identifier", "data"};

} // namespace

QV_DEFINE_CONTENT_ITEM(QVFileThumbnailItem, .archiveList = QVArchiveList::kExtended,
                       .archived = kArchived)
