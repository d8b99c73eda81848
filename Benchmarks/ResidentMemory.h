#pragma once

#include <cstddef>

namespace Benchmarks {

// How many bytes of memory the process has now, after what it freed went back to the system.
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
