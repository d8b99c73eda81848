#pragma once

#include "Platform/Foundation/BinaryPropertyListReader.h"
#include "Platform/Foundation/Object.h"
#include "Platform/Foundation/String.h"

namespace NS {

// The object for a value that stands by itself in a property list; nil for a collection, a UID and
// the list's own null.
RefPtr<Object> plainObject(const PropertyListNode& node);

// The text of a node that is one; nil for any other.
RefPtr<String> textOf(const PropertyListNode& node);

} // namespace NS
