#pragma once

#include "Platform/Foundation/Data.h"
#include "Platform/Foundation/Object.h"

namespace NS {

// A property list of plain values: texts, numbers, dates, data, and arrays and dictionaries of
// them.

// The value as a binary property list. Raises NSInvalidArgumentException for an object that
// property lists do not have, a dictionary's key that is no text, and collections nested too deep.
Ref<Data> propertyListData(const Object& value);

// The value of a binary property list; nil when it is damaged, or nested too deep.
RefPtr<Object> propertyListValue(const Data& data);

} // namespace NS
