#pragma once

#include "Platform/Foundation/Object.h"
#include "Platform/Foundation/String.h"
#include "Programs/Inspect/JsonOutput.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace Inspection {

// How values that are no collections stand in JSON (Docs/inspector.md).

// A text, number, date, data or null object; false for any other object, of which nothing is
// written.
bool writePlainValue(JsonOutput& out, const NS::Object& object);
void writeNil(JsonOutput& out);
// A record or collection that was written before.
void writeReference(JsonOutput& out, std::uint32_t number);

// The text as JSON holds it; nothing when it is not valid Unicode.
std::optional<std::string> utf8Of(const NS::String& text);
// A key of a dictionary: one that begins with "$" gets a second one in front.
void writeKey(JsonOutput& out, std::string_view utf8);

} // namespace Inspection
