#include "Benchmarks/Support/RawLogLine.h"

#include <fcntl.h>
#include <unistd.h>

namespace Benchmarks {

bool appendRaw(const char* path, std::string_view line) noexcept {
    const int file = ::open(path, O_WRONLY | O_CLOEXEC);
    if (file < 0) {
        return false;
    }
    const bool sought = ::lseek(file, 0, SEEK_END) >= 0;
    const bool written =
        sought && ::write(file, line.data(), line.size()) == static_cast<ssize_t>(line.size());
    return ::close(file) == 0 && written;
}

} // namespace Benchmarks
