#include "QVApi/Content/QVSharedXAttrs.h"

namespace {

constexpr std::string_view kArchived[] = {"identifier", "xattrsByPath"};

} // namespace

QV_DEFINE_CONTENT_ITEM(QVSharedXAttrs, .archiveList = QVArchiveList::kExtended,
                       .archived = kArchived)
