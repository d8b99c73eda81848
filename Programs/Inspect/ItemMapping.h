#pragma once

#include "QVApi/Content/QVContentItem.h"

#include <string>
#include <vector>

namespace Inspection {

// A key of a reply that keeps it from becoming a record.
struct MappingFailure {
    std::string property; // where it would have gone
    std::string reply;    // where it was looked for: "Name", "Folders[3].Name"
    std::string reason;
};

// The class of the content model of that name, or null.
const QVContentClass* contentClassNamed(std::string_view name);

// The record that a reply becomes; nil, and every key that fails, when it becomes none.
NS::RefPtr<QVContentItem> mapReply(const QVContentClass& itemClass, const NS::Dictionary& reply,
                                   std::vector<MappingFailure>& failures);

} // namespace Inspection
