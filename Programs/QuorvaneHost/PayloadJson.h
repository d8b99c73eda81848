#pragma once

#include "Platform/Foundation/Object.h"

#include <nlohmann/json.hpp>

// An object that came over the link, as JSON: texts, numbers, truth values, arrays and dictionaries
// as their counterparts, nil and the null object as null.
//
// A text that is not valid Unicode, as a file name can be, is {"$bytes": "…"} with its bytes
// percent-encoded. Anything else is {"$class": name, "description": …}. Deeper than 64 levels,
// after a million values or 64 MiB of text "…" stands for the rest, since a payload can hold
// itself.
nlohmann::ordered_json jsonFromPayload(const NS::RefPtr<NS::Object>& object);
