#pragma once

#include "Platform/Foundation/BinaryPropertyListReader.h"
#include "Platform/Foundation/String.h"

#include <string_view>

// What the reader of archives raises, and the looks at a list's items that lead there.
namespace NS {

// Raises NSInvalidArgumentException: bytes that are no keyed archive, or a damaged one.
[[noreturn]] void raiseIncomprehensible(const char* reason);
// Raises NSInvalidUnarchiveOperationException: what is there is not what was to be decoded.
[[noreturn]] void raiseInvalid(const Ref<String>& reason);

// A name from outside, cut to a length that a log line can bear.
Ref<String> quoted(const String& name);
Ref<String> quoted(std::string_view name);

// Raises as an incomprehensible archive when an item is damaged.
void checkIntact(const BinaryPropertyListReader::Item& item);

// Whether an item is this text, in either of the two forms that lists have for texts.
bool isText(const BinaryPropertyListReader::Item& item, std::string_view utf8) noexcept;

} // namespace NS
