#pragma once

#include <ostream>

namespace Inspection {

// Lists every class of the content model with its superclasses, its mapping (property and key of
// the reply, also where it is inherited) and what it archives beside the time.
void printClasses(std::ostream& out);

} // namespace Inspection
