#include "Programs/Inspect/ProgramFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace Inspection {

namespace {

bool isRegular(int file) noexcept {
    struct stat status {};
    return ::fstat(file, &status) == 0 && S_ISREG(status.st_mode);
}

} // namespace

ProgramFile::ProgramFile(const std::string& path) {
    // Takes hold of what is there without opening it.
    const NS::FileDescriptor held(::open(path.c_str(), O_PATH | O_CLOEXEC));
    if (isRegular(held.get())) {
        const std::string again = "/proc/self/fd/" + std::to_string(held.get());
        file_.reset(::open(again.c_str(), O_RDONLY | O_CLOEXEC));
    }
}

std::string ProgramFile::path() const {
    return "/proc/" + std::to_string(::getpid()) + "/fd/" + std::to_string(file_.get());
}

std::optional<std::string> ProgramFile::bytesAt(std::uint64_t offset, std::uint64_t count) const {
    std::string bytes(count, '\0');
    const ssize_t length =
        ::pread(file_.get(), bytes.data(), bytes.size(), static_cast<off_t>(offset));
    return length >= 0 && static_cast<std::uint64_t>(length) == count
               ? std::optional(std::move(bytes))
               : std::nullopt;
}

} // namespace Inspection
