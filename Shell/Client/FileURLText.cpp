#include "Shell/Client/FileURLText.h"

#include <array>
#include <charconv>

namespace Shell {

namespace {

constexpr std::string_view kScheme = "file://";
constexpr std::string_view kDigits = "0123456789ABCDEF";

constexpr std::array<bool, 256> kStandsInPath = [] {
    std::array<bool, 256> table{};
    for (const char c : std::string_view("ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz"
                                         "0123456789-._~!$&'()*+,=@/")) {
        table[static_cast<unsigned char>(c)] = true;
    }
    return table;
}();

} // namespace

std::string fileURLOf(std::string_view path) {
    std::string url(kScheme);
    url.reserve(kScheme.size() + path.size() + path.size() / 4);
    std::size_t done = 0;
    for (std::size_t i = 0; i < path.size(); ++i) {
        const auto byte = static_cast<unsigned char>(path[i]);
        if (!kStandsInPath[byte]) {
            url.append(path, done, i - done);
            url += {'%', kDigits[byte >> 4U], kDigits[byte & 0xFU]};
            done = i + 1;
        }
    }
    return url.append(path, done);
}

std::optional<std::string> pathOfFileURL(std::string_view url) {
    if (!url.starts_with(kScheme) || !url.substr(kScheme.size()).starts_with('/')) {
        return std::nullopt;
    }
    std::string path;
    for (std::size_t i = kScheme.size(); i < url.size(); ++i) {
        if (url[i] != '%') {
            path.push_back(url[i]);
            continue;
        }
        const std::string_view digits = url.substr(i + 1, 2);
        unsigned byte = 0;
        const auto end = digits.data() + digits.size();
        if (digits.size() != 2 || std::from_chars(digits.data(), end, byte, 16).ptr != end ||
            byte == 0 || byte == '/') {
            return std::nullopt;
        }
        path.push_back(static_cast<char>(byte));
        i += 2;
    }
    while (path.size() > 1 && path.ends_with('/')) {
        path.pop_back();
    }
    return path;
}

} // namespace Shell
