#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace Benchmarks {

// What reading a binary property list costs at the least: the way from the top object along every
// reference, each object once, its place in the table, its marker and its size checked against the
// bytes, every number and character read, and nothing kept. Gives a sum of all that was read, or 0
// for a damaged list.
std::uint64_t walkedSum(std::span<const std::byte> list);

} // namespace Benchmarks
