#pragma once

#include "Platform/Foundation/String.h"

#include <string_view>

namespace NS {

class Array;
class Dictionary;
class Set;

// The platform's multi-line descriptions of collections: "(", "{" or "{(" and its counterpart on
// lines of their own, one element a line, indented by four blanks a level; a dictionary whose keys
// are all texts is in their order. A text stands bare when it is ASCII letters and digits, else in
// double quotes with escapes (\n, \", \\, \U00e9).
//
// Deeper than 64 levels, or beyond 1 MiB of text, the description breaks off with "...": a
// collection can hold itself, and one that came from another process can be made to unfold without
// end.
Ref<String> describe(const Array& array);
Ref<String> describe(const Dictionary& dictionary);
Ref<String> describe(const Set& set);

// " UserInfo={key=value, key=value}": a dictionary on one line, as an error shows its facts. The
// same limits.
Ref<String> describeUserInfo(const Dictionary& userInfo);

// The description of an object that may be nil: "(null)".
Ref<String> descriptionOf(const Object* object);

// Text as it stands in a collection's description: bare or quoted.
Ref<String> quotedForDescription(const String& text);

} // namespace NS
