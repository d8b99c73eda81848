#pragma once

#include "Platform/Foundation/Array.h"
#include "Platform/Foundation/String.h"

// What the small messages of the benchmarks carry.
namespace Benchmarks {

// A path whose archive has Benchmarks::kArchiveLength bytes.
NS::Ref<NS::String> pathOnDrive();
// An action's name, and that path's archive.
NS::Ref<NS::Array> smallMessage();

} // namespace Benchmarks
