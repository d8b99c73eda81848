#pragma once

#include "Platform/Foundation/Object.h"

#include <string_view>

namespace Inspection {

// What objects whose key begins with "$" mean.
enum class Forms : std::uint8_t {
    kNone,   // what they say: the JSON is somebody else's
    kValues, // the values that printArchive() shows so
};

// The value that a JSON text stands for; nil for the form of nil.
//
// Numbers without point or exponent are integers, null is the null object. Raises Error, which says
// what is wrong and where, for anything that is no JSON, for a key that stands twice in an object,
// an integer beyond 64 bits, objects deeper within one another than NS::Limits::kDepth, a form that
// does not exist or is filled in wrongly, nil within a collection, for records, and for keys and
// members of sets that take more work to tell apart than the text is long for.
NS::RefPtr<NS::Object> valueFromJson(std::string_view json, Forms forms);

} // namespace Inspection
