#pragma once

#include <cstddef>

namespace Benchmarks {

// Has what the process freed go back to the system.
void giveBackMemory();
// How many bytes of memory the process has now, after that.
std::size_t residentBytes();

// What memory has come to since this was made.
class MemoryMeter {
  public:
    MemoryMeter() : before_(residentBytes()) {}

    double bytesPer(std::size_t entries) const {
        return (static_cast<double>(residentBytes()) - static_cast<double>(before_)) /
               static_cast<double>(entries);
    }

  private:
    std::size_t before_;
};

} // namespace Benchmarks
