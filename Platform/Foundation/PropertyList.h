#pragma once

#include "Platform/Foundation/Data.h"
#include "Platform/Foundation/Object.h"

namespace NS {

// Plain property lists, written in the binary form and read in that or XML: texts, numbers, dates,
// data, and arrays and dictionaries of them whose keys are texts. No identity: an object that
// stands in it twice is written twice.

// Nil, and why, when something in the object is of another class, a key is no text, or collections
// stand deeper within one another than Limits::kDepth.
RefPtr<Data> dataWithPropertyList(const Object& object, RefPtr<String>& reason);

// Nil, and why, when the bytes are no property list, a damaged one, or one with anything else in
// it. The bytes may come from anywhere.
RefPtr<Object> propertyListWithData(const Data& data, RefPtr<String>& reason);

} // namespace NS
