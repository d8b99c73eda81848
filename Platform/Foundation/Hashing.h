#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

// Hashes for collections. They are keyed with a random number that each process draws anew, so that
// another process cannot choose keys that all fall on one place of a table. They mean nothing
// outside of the process and must not be written anywhere.
namespace NS {

// The hash of a run of bytes.
std::size_t hashOfBytes(std::string_view bytes);
std::size_t hashOfInteger(std::uint64_t value);
// The same for +0 and -0, and for everything that is not a number.
std::size_t hashOfReal(double value);

} // namespace NS
