#pragma once

#include "Platform/Foundation/Object.h"

#include <string_view>

namespace Inspection {

// The value of a form that has no collection in it: "$data", "$date", "$bytes", "$utf16", "$real".
// Raises Error for one that does not exist, or whose contents are not what it takes.
NS::Ref<NS::Object> valueOfForm(std::string_view form, const NS::RefPtr<NS::Object>& contents);

} // namespace Inspection
