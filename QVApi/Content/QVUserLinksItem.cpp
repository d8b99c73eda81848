#include "QVApi/Content/QVUserLinksItem.h"

namespace {

constexpr QVMapping kMapping[] = {
    {"accountLink", "account"},
    {"billingLink", "billing"},
};

// Without the identifier: a restored one has none. LosesItsIdentifierInTheArchive holds it.
constexpr std::string_view kArchived[] = {"accountLink", "billingLink"};

} // namespace

QV_DEFINE_CONTENT_ITEM(QVUserLinksItem, .mapping = kMapping,
                       .archiveList = QVArchiveList::kExtended, .archived = kArchived)
