#include "Benchmarks/Support/SelectedPaths.h"

#include <iterator>

namespace Benchmarks {

namespace {

constexpr const char* kFolders[] = {"/Pictures/", "/", "/Documents/Travel/", "/Music/"};

std::string pictureName(std::size_t number) {
    std::string digits = std::to_string(number);
    digits.insert(0, digits.size() < 7 ? 7 - digits.size() : 0, '0');
    return "holiday picture " + digits + ".jpg";
}

} // namespace

std::vector<std::string> selectedPaths(std::string_view drive, std::size_t count) {
    std::vector<std::string> paths;
    paths.reserve(count);
    for (std::size_t i = 0; i < count; ++i) {
        paths.push_back(std::string(drive) + "/Pictures/" + pictureName(i));
    }
    return paths;
}

std::vector<std::string> foundPaths(std::string_view drive, std::size_t count) {
    std::vector<std::string> paths;
    paths.reserve(count);
    for (std::size_t i = 0; i < count; ++i) {
        paths.push_back(std::string(drive) + kFolders[i % std::size(kFolders)] + pictureName(i));
    }
    return paths;
}

} // namespace Benchmarks
