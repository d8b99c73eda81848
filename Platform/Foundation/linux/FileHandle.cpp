#include "Platform/Foundation/FileHandle.h"

#include <cerrno>
#include <fcntl.h>
#include <unistd.h>

namespace NS {

std::optional<FileHandle> FileHandle::fileHandleForWritingAtPath(const String& path) {
    // Without waiting: a named pipe that nobody reads must not hold the caller up.
    const int file =
        ::open(path.fileSystemRepresentation().c_str(), O_WRONLY | O_CLOEXEC | O_NONBLOCK);
    return file < 0 ? std::nullopt : std::optional<FileHandle>(FileHandle(file));
}

FileHandle::~FileHandle() {
    if (file_ >= 0) {
        (void)::close(file_); // what could not be written has been told by writeData()
    }
}

bool FileHandle::seekToEndOfFile() {
    return ::lseek(file_, 0, SEEK_END) >= 0;
}

bool FileHandle::writeData(Bytes bytes) {
    while (!bytes.empty()) {
        const ssize_t written = ::write(file_, bytes.data(), bytes.size());
        if (written < 0 && errno == EINTR) {
            continue;
        }
        if (written <= 0) {
            return false;
        }
        bytes = bytes.subspan(static_cast<std::size_t>(written));
    }
    return true;
}

} // namespace NS
