#pragma once

#include "Platform/Foundation/Data.h"

#include <cstddef>
#include <optional>
#include <string>

namespace NS {

// The XML form of a property list, which is read by turning it into the binary one: whatever is
// checked and bounded there holds for both.
//
// Elements: plist around one of dict, array, string, integer, real, date, data, true, false; the
// UID of a keyed archive is a dict with the one key CF$UID and an integer. A document type is
// passed over, and nothing is ever fetched for it; one that defines entities is refused. Any
// thread.

// True for bytes that begin as XML does, in UTF-8 or UTF-16.
bool isXMLPropertyList(Bytes bytes) noexcept;

// The list in the binary form. Nothing, and why and on which line, when the bytes are no XML, no
// property list, longer than 2 GiB, or nested deeper than Limits::kDepth. Memory is in proportion
// to the bytes.
std::optional<ByteBuffer> binaryListOfXML(Bytes xml, std::string& reason);

} // namespace NS
