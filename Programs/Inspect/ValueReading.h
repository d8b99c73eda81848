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
// Numbers without point or exponent are integers, null is the null object. In somebody else's JSON
// an integer beyond 64 bits is a real number, and one beyond the reals infinity of its sign:
// whether that is a mistake depends on what reads it.
//
// Raises Error, which says what is wrong and where, for anything that is no JSON, for a key that
// stands twice in an object, objects deeper within one another than NS::Limits::kDepth; and among
// values for a number that is too large for its type, a member that stands twice in a set, a form
// that does not exist or is filled in wrongly, nil within a collection, records, and keys and
// members of sets that take more work to tell apart than the text is long for.
NS::RefPtr<NS::Object> valueFromJson(std::string_view json, Forms forms);

} // namespace Inspection
