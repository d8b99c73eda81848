#include "Benchmarks/Support/SelectedPaths.h"

namespace Benchmarks {

std::vector<std::string> selectedPaths(std::string_view drive, std::size_t count) {
    std::vector<std::string> paths;
    paths.reserve(count);
    for (std::size_t i = 0; i < count; ++i) {
        std::string digits = std::to_string(i);
        digits.insert(0, digits.size() < 7 ? 7 - digits.size() : 0, '0');
        paths.push_back(std::string(drive) + "/Pictures/holiday picture " + digits + ".jpg");
    }
    return paths;
}

} // namespace Benchmarks
