#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace Inspection {

// A JSON text whose numbers are all within the range of a double.
struct FiniteNumbers {
    std::string json; // empty when the text can be read as it is
    // Which of the text's numbers, counted from 0, were beyond the range; ascending.
    std::vector<std::size_t> overflowing;
};

// The text with each number beyond the range as 1.0 or -1.0, by its sign, and blanks: what the
// parser says of lines and columns stays true. The parser itself gives up at such a number.
FiniteNumbers withFiniteNumbers(std::string_view json);

} // namespace Inspection
