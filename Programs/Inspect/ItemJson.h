#pragma once

#include "QVApi/Content/QVContentItem.h"

#include <ostream>

namespace Inspection {

// Prints a record of the content model as its archive would be shown (Docs/inspector.md): the time,
// what its class archives, in that order, and then what it holds beside that.
void printItem(const NS::Ref<QVContentItem>& item, std::ostream& out);

} // namespace Inspection
