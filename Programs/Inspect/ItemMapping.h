#pragma once

#include "QVApi/Content/QVContentItem.h"

#include <string>
#include <vector>

namespace Inspection {

// A key of a reply that does not become a value of its record.
struct MappingFailure {
    std::string property; // where it would have gone: "name", "folders[3].name"
    std::string reply;    // where it was looked for: "Name", "Folders[3].Name"
    std::string reason;
};

// The class of the content model of that name, or null.
const QVContentClass* contentClassNamed(std::string_view name);

// The record that a reply becomes. Nil when it becomes none, with every key that fails, also those
// in entries of lists, and in entries that would merely have been left out.
NS::RefPtr<QVContentItem> mapReply(const QVContentClass& itemClass, const NS::Dictionary& reply,
                                   std::vector<MappingFailure>& failures);

} // namespace Inspection
