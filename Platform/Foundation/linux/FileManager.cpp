#include "Platform/Foundation/FileManager.h"

#include "Platform/Foundation/linux/FileDescriptor.h"
#include "Platform/Foundation/linux/FileTimes.h"
#include "Platform/Foundation/linux/SystemFolder.h"
#include "Platform/Foundation/linux/SystemPath.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <dirent.h>
#include <fcntl.h>
#include <filesystem>
#include <memory>
#include <string>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>
#include <vector>

namespace NS {

namespace {

constexpr mode_t kFolderMode = 0700;
// Without waiting: a named pipe that nobody reads must not hold the caller up.
constexpr int kForWriting = O_WRONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY;

FileAttributes::Kind kindOf(mode_t mode) noexcept {
    switch (mode & S_IFMT) {
    case S_IFREG:
        return FileAttributes::Kind::kRegular;
    case S_IFDIR:
        return FileAttributes::Kind::kDirectory;
    case S_IFLNK:
        return FileAttributes::Kind::kSymbolicLink;
    default:
        return FileAttributes::Kind::kOther;
    }
}

bool isDirectory(const char* path) noexcept {
    struct stat status {};
    return ::stat(path, &status) == 0 && S_ISDIR(status.st_mode);
}

bool writeAll(int file, Bytes bytes) noexcept {
    while (!bytes.empty()) {
        const ssize_t written = ::write(file, bytes.data(), bytes.size());
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

// How many bytes were read before the end of the file; nothing on failure.
std::optional<std::size_t> readAll(int file, std::span<std::byte> buffer) noexcept {
    std::size_t length = 0;
    while (length < buffer.size()) {
        const ssize_t count = ::read(file, buffer.data() + length, buffer.size() - length);
        if (count < 0 && errno == EINTR) {
            continue;
        }
        if (count < 0) {
            return std::nullopt;
        }
        if (count == 0) {
            break;
        }
        length += static_cast<std::size_t>(count);
    }
    return length;
}

// The path without slashes at its end, which would make the system follow a symbolic link.
std::string withoutSlashesAtEnd(const char* path) {
    std::string text(path);
    while (text.size() > 1 && text.back() == '/') {
        text.pop_back();
    }
    return text;
}

// A name in the same folder, since a file can be renamed within its file system only; its length
// does not depend on the path's own name, which may be as long as names can be.
std::string temporaryNameBeside(const std::string& path) {
    return path.substr(0, path.rfind('/') + 1) + ".new-XXXXXX";
}

// From the file's folder, which is kept open, the system has one name to look up, not all on the
// way to it. The calls are in one function: when one of them returns, the processor has forgotten
// where functions return to, and much of their code.
class SystemFileAppender final : public FileAppender {
  public:
    explicit SystemFileAppender(const String& path) : path_(path) {
        if (const char* const slash = std::strrchr(path_.c_str(), '/')) {
            name_ = slash + 1;
        }
    }

    bool append(Bytes bytes) override {
        FileDescriptor file(folder_ ? ::openat(folder_.get(), name_, kForWriting) : -1);
        if (!file) [[unlikely]] {
            file = openByPath();
        }
        return file && ::lseek(file.get(), 0, SEEK_END) >= 0 && writeAll(file.get(), bytes);
    }

  private:
    // For the first time, and when the folder has no such file: another one may have its path now.
    [[gnu::noinline]] FileDescriptor openByPath() {
        if (name_ != nullptr) {
            const std::string folder(path_.c_str(), name_);
            folder_.reset(::open(folder.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
        }
        return FileDescriptor(::open(path_.c_str(), kForWriting));
    }

    SystemPath path_;
    const char* name_ = nullptr; // in the path; null for one without a folder
    FileDescriptor folder_;
};

class SystemFileManager final : public FileManager {
  public:
    bool fileExistsAtPath(const String& path) override {
        return ::access(SystemPath(path).c_str(), F_OK) == 0;
    }

    std::optional<FileAttributes> attributesOfItemAtPath(const String& path) override {
        struct statx status {};
        if (::statx(AT_FDCWD, SystemPath(path).c_str(), AT_SYMLINK_NOFOLLOW,
                    STATX_BASIC_STATS | kFileTimes, &status) != 0) {
            return std::nullopt;
        }
        return FileAttributes{kindOf(status.stx_mode), status.stx_size,
                              Date::dateWithTimeIntervalSince1970(creationSecondsOf(status)),
                              Date::dateWithTimeIntervalSince1970(secondsOf(status.stx_mtime))};
    }

    RefPtr<Array> contentsOfDirectoryAtPath(const String& path) override {
        const std::unique_ptr<DIR, int (*)(DIR*)> folder(::opendir(SystemPath(path).c_str()),
                                                         &::closedir);
        if (!folder) {
            return nullptr;
        }
        const auto names = make<MutableArray>();
        while (const dirent* const entry = ::readdir(folder.get())) {
            const std::string_view name(entry->d_name);
            if (name != "." && name != "..") {
                names->addObject(String::fromFileSystemRepresentation(name));
            }
        }
        return names;
    }

    std::unique_ptr<FileFolder> folderAtPath(const String& path) override {
        return openSystemFolder(path);
    }

    RefPtr<Data> contentsAtPath(const String& path) override {
        // Without waiting: a named pipe that nobody writes to must not hold the caller up.
        const FileDescriptor file(
            ::open(SystemPath(path).c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
        struct stat status {};
        if (::fstat(file.get(), &status) != 0 || !S_ISREG(status.st_mode) ||
            static_cast<std::size_t>(status.st_size) > kLongestContents) {
            return nullptr;
        }
        std::vector<std::byte> bytes(static_cast<std::size_t>(status.st_size));
        const std::optional<std::size_t> length = readAll(file.get(), bytes);
        if (!length) {
            return nullptr;
        }
        bytes.resize(*length);
        return Data::dataWithVector(std::move(bytes));
    }

    bool createDirectoryAtPath(const String& path) override {
        const std::string text(SystemPath(path).c_str());
        if (isDirectory(text.c_str())) {
            return true;
        }
        // Whether a folder above was there or could not be made shows at the last one.
        for (std::size_t slash = text.find('/', 1); slash != std::string::npos;
             slash = text.find('/', slash + 1)) {
            (void)::mkdir(text.substr(0, slash).c_str(), kFolderMode);
        }
        (void)::mkdir(text.c_str(), kFolderMode);
        return isDirectory(text.c_str());
    }

    bool createFileAtPath_contents(const String& path, Bytes contents) override {
        const SystemPath target(path);
        if (*target.c_str() == '\0') {
            return false;
        }
        std::string temporary = temporaryNameBeside(target.c_str());
        FileDescriptor file(::mkostemp(temporary.data(), O_CLOEXEC));
        if (!file) {
            return false;
        }
        const bool written = writeAll(file.get(), contents);
        const bool closed = ::close(file.release()) == 0;
        if (written && closed && ::rename(temporary.c_str(), target.c_str()) == 0) {
            return true;
        }
        (void)::unlink(temporary.c_str());
        return false;
    }

    std::unique_ptr<FileAppender> appenderForPath(const String& path) override {
        return std::make_unique<SystemFileAppender>(path);
    }

    bool removeItemAtPath(const String& path) override {
        std::error_code error;
        const auto removed =
            std::filesystem::remove_all(withoutSlashesAtEnd(SystemPath(path).c_str()), error);
        return !error && removed > 0;
    }

  protected:
    std::optional<int> openForWriting(const String& path) override {
        const int file = ::open(SystemPath(path).c_str(), kForWriting);
        return file < 0 ? std::nullopt : std::optional<int>(file);
    }

    bool seekToEnd(int file) override { return ::lseek(file, 0, SEEK_END) >= 0; }

    bool write(int file, Bytes bytes) override { return writeAll(file, bytes); }

    void close(int file) noexcept override {
        (void)::close(file); // what could not be written has been told by write()
    }
};

// Stays usable while the process ends.
SystemFileManager& systemFileManager() {
    static SystemFileManager& manager = *new SystemFileManager;
    return manager;
}

std::atomic<FileManager*> replacement{nullptr};

} // namespace

FileManager& FileManager::defaultManager() noexcept {
    FileManager* const manager = replacement.load();
    return manager != nullptr ? *manager : systemFileManager();
}

FileManager* FileManager::replace(FileManager* manager) noexcept {
    return replacement.exchange(manager);
}

bool isSystemFolder(const std::string& path) noexcept {
    return isDirectory(path.c_str());
}

} // namespace NS
