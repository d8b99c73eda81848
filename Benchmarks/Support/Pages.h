#pragma once

#include "Platform/Foundation/Data.h"

#include <span>

namespace Benchmarks {

// Writes the number of each page into its first byte.
void fillPages(std::span<std::byte> bytes);
// Reads and checks it. Throws where it is another.
void readPages(NS::Bytes bytes);

} // namespace Benchmarks
