#include "Programs/QuorvaneHost/FreeNames.h"

#include <cstddef>
#include <cstdint>

namespace {

constexpr std::size_t kLongestName = 255;
// What is longer is part of the name.
constexpr std::size_t kLongestExtension = 16;

// Where the extension begins, dot included; the end for a name without one.
std::size_t extensionOf(const std::string& name) {
    const std::size_t dot = name.rfind('.');
    const bool isExtension = dot != std::string::npos && dot > 0 && dot + 1 < name.size() &&
                             name.size() - dot <= kLongestExtension;
    return isExtension ? dot : name.size();
}

bool continuesCharacter(char byte) {
    return (static_cast<unsigned char>(byte) & 0xC0U) == 0x80U;
}

std::string cut(std::string text, std::size_t length) {
    if (text.size() <= length) {
        return text;
    }
    while (length > 0 && continuesCharacter(text[length])) {
        --length;
    }
    text.resize(length);
    return text;
}

std::string numbered(const std::string& name, std::uint64_t number) {
    const std::size_t extension = extensionOf(name);
    const std::string tail = " " + std::to_string(number) + name.substr(extension);
    return cut(name.substr(0, extension), kLongestName - tail.size()) + tail;
}

} // namespace

std::string FreeNames::nameFor(const std::string& path, const IsFree& isFree) {
    std::string name = path.substr(path.rfind('/') + 1);
    if (!lastNumbers_.contains(path) && isFree(name)) {
        return name;
    }
    std::uint64_t& number = lastNumbers_.try_emplace(path, 1).first->second;
    std::string free;
    do {
        free = numbered(name, ++number);
    } while (!isFree(free));
    return free;
}
