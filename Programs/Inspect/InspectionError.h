#pragma once

#include <stdexcept>

namespace Inspection {

// What is wrong with the input, in words for the person who gave it.
class Error : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

} // namespace Inspection
