#include "Platform/Foundation/FileManager.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <dirent.h>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>
#include <vector>

namespace NS {

namespace {

// A list of settings or a marker, never a user's document.
constexpr std::size_t kContentsLimit = std::size_t{64} << 20U;

double seconds(const statx_timestamp& time) noexcept {
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

RefPtr<Date> creationDate(const struct statx& status) {
    if ((status.stx_mask & STATX_BTIME) != 0) {
        return Date::dateWithTimeIntervalSince1970(seconds(status.stx_btime));
    }
    return Date::dateWithTimeIntervalSince1970(
        std::min(seconds(status.stx_mtime), seconds(status.stx_ctime)));
}

FileAttributes::Kind kindOf(unsigned mode) noexcept {
    if (S_ISREG(mode)) {
        return FileAttributes::Kind::kRegular;
    }
    if (S_ISDIR(mode)) {
        return FileAttributes::Kind::kDirectory;
    }
    return S_ISLNK(mode) ? FileAttributes::Kind::kSymbolicLink : FileAttributes::Kind::kOther;
}

bool writeAll(int file, Bytes bytes) {
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

class SystemFileManager final : public FileManager {
  public:
    RefPtr<Array> contentsOfDirectoryAtPath(const String& path) override {
        const std::unique_ptr<DIR, int (*)(DIR*)> folder(
            ::opendir(path.fileSystemRepresentation().c_str()), &::closedir);
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

    std::optional<FileAttributes> attributesOfItemAtPath(const String& path) override {
        struct statx status {};
        if (::statx(AT_FDCWD, path.fileSystemRepresentation().c_str(), AT_SYMLINK_NOFOLLOW,
                    STATX_BASIC_STATS | STATX_BTIME, &status) != 0) {
            return std::nullopt;
        }
        return FileAttributes{kindOf(status.stx_mode), status.stx_size, creationDate(status),
                              Date::dateWithTimeIntervalSince1970(seconds(status.stx_mtime))};
    }

    bool createDirectoryAtPath(const String& path) override {
        std::error_code error;
        const std::filesystem::path folder(path.fileSystemRepresentation());
        std::filesystem::create_directories(folder, error);
        return std::filesystem::is_directory(folder, error);
    }

    bool createFileAtPath_contents(const String& path, Bytes contents) override {
        const std::string target = path.fileSystemRepresentation();
        std::string temporary = target + ".XXXXXX";
        const int file = ::mkostemp(temporary.data(), O_CLOEXEC);
        if (file < 0) {
            return false;
        }
        const bool written = writeAll(file, contents);
        const bool closed = ::close(file) == 0;
        if (written && closed && ::rename(temporary.c_str(), target.c_str()) == 0) {
            return true;
        }
        (void)::unlink(temporary.c_str());
        return false;
    }

    bool removeItemAtPath(const String& path) override {
        std::error_code error;
        const auto removed = std::filesystem::remove_all(path.fileSystemRepresentation(), error);
        return !error && removed > 0;
    }

    RefPtr<Data> contentsAtPath(const String& path) override {
        std::ifstream file(path.fileSystemRepresentation(), std::ios::binary);
        if (!file) {
            return nullptr;
        }
        std::string contents;
        std::vector<char> piece(1 << 16);
        while (file.read(piece.data(), static_cast<std::streamsize>(piece.size())),
               file.gcount() > 0) {
            contents.append(piece.data(), static_cast<std::size_t>(file.gcount()));
            if (contents.size() > kContentsLimit) {
                return nullptr;
            }
        }
        return file.bad() ? nullptr : RefPtr<Data>(Data::dataWithBytes(bytesOf(contents)));
    }
};

// Usable while the process ends.
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

} // namespace NS
