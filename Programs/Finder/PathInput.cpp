#include "Programs/Finder/PathInput.h"

#include "Programs/Finder/Arguments.h"

#include <array>
#include <cerrno>
#include <cstring>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

// A million paths of the greatest length that most systems allow would be four times as much; what
// the bus takes is far less.
constexpr std::size_t kLongestPathInput = std::size_t{1} << 30U;
constexpr int kFirstByteMilliseconds = 1000;

std::string contentsOf(int descriptor) {
    std::string contents;
    std::array<char, 65536> buffer;
    for (;;) {
        const ssize_t got = ::read(descriptor, buffer.data(), buffer.size());
        if (got == 0) {
            return contents;
        }
        if (got < 0 && errno == EINTR) {
            continue;
        }
        if (got < 0) {
            throw UserError(std::string("standard input cannot be read: ") + std::strerror(errno));
        }
        contents.append(buffer.data(), static_cast<std::size_t>(got));
        if (contents.size() > kLongestPathInput) {
            throw UserError("standard input brings more paths than can be selected");
        }
    }
}

bool beginsInTime(int descriptor) {
    pollfd state{descriptor, POLLIN, 0};
    return ::poll(&state, 1, kFirstByteMilliseconds) == 1;
}

} // namespace

std::vector<std::string> pathsFrom(int descriptor) {
    const std::string contents = contentsOf(descriptor);
    std::vector<std::string> paths;
    for (std::size_t start = 0; start < contents.size();) {
        const std::size_t end = std::min(contents.find('\0', start), contents.size());
        paths.push_back(contents.substr(start, end - start));
        start = end + 1;
    }
    return paths;
}

std::optional<std::vector<std::string>> pathsFromPipe(int descriptor) {
    struct stat status {};
    if (::fstat(descriptor, &status) != 0 ||
        (!S_ISREG(status.st_mode) && !S_ISFIFO(status.st_mode))) {
        return std::nullopt;
    }
    return beginsInTime(descriptor) ? pathsFrom(descriptor) : std::vector<std::string>();
}
