#include "Platform/Foundation/UserDefaultsFile.h"

#include "Platform/Foundation/Limits.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <optional>
#include <pwd.h>
#include <string>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

namespace NS::UserDefaultsFile {

namespace {

namespace fs = std::filesystem;

// A descriptor that is closed at the end; below zero when opening failed.
class Descriptor {
  public:
    explicit Descriptor(int descriptor) noexcept : descriptor_(descriptor) {}
    ~Descriptor() {
        if (descriptor_ >= 0) {
            (void)::close(descriptor_); // what mattered was synced before
        }
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;

    int get() const noexcept { return descriptor_; }
    bool isOpen() const noexcept { return descriptor_ >= 0; }

  private:
    int descriptor_;
};

// A folder that a variable names; one that is not absolute does not count.
std::optional<fs::path> folderFrom(const char* variable) {
    const char* const value = std::getenv(variable);
    return value != nullptr && *value == '/' ? std::optional<fs::path>(value) : std::nullopt;
}

fs::path homeFolder() {
    if (const auto home = folderFrom("HOME")) {
        return *home;
    }
    const passwd* const entry = ::getpwuid(::getuid());
    return entry != nullptr && entry->pw_dir != nullptr ? entry->pw_dir : "/";
}

fs::path folder() {
    const auto configuration = folderFrom("XDG_CONFIG_HOME");
    return (configuration ? *configuration : homeFolder() / ".config") / "Quorvane";
}

std::string fileName() {
    return std::string(::program_invocation_short_name) + ".plist";
}

// Makes the folder and those above it, for this user alone.
bool makeFolder(const fs::path& path) {
    if (::mkdir(path.c_str(), 0700) == 0 || errno == EEXIST) {
        return true;
    }
    return errno == ENOENT && path.has_relative_path() && makeFolder(path.parent_path()) &&
           (::mkdir(path.c_str(), 0700) == 0 || errno == EEXIST);
}

bool writeAll(int descriptor, Bytes contents) {
    while (!contents.empty()) {
        const ssize_t written = ::write(descriptor, contents.data(), contents.size());
        if (written < 0 && errno == EINTR) {
            continue;
        }
        if (written <= 0) {
            return false;
        }
        contents = contents.subspan(static_cast<std::size_t>(written));
    }
    return true;
}

std::optional<std::vector<std::byte>> readAll(int descriptor, std::size_t size) {
    std::vector<std::byte> contents(size);
    std::size_t filled = 0;
    while (filled < size) {
        const ssize_t got = ::read(descriptor, contents.data() + filled, size - filled);
        if (got < 0 && errno == EINTR) {
            continue;
        }
        if (got <= 0) {
            return std::nullopt;
        }
        filled += static_cast<std::size_t>(got);
    }
    return contents;
}

} // namespace

RefPtr<Data> read() {
    // Not blocking, so that a pipe in the file's place does not hold us up.
    const Descriptor file(
        ::open((folder() / fileName()).c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    struct stat status {};
    if (!file.isOpen() || ::fstat(file.get(), &status) != 0 || !S_ISREG(status.st_mode) ||
        status.st_size > static_cast<off_t>(Limits::kUserDefaultsFile)) {
        return nullptr;
    }
    auto contents = readAll(file.get(), static_cast<std::size_t>(status.st_size));
    return contents ? RefPtr<Data>(Data::dataWithVector(std::move(*contents))) : nullptr;
}

bool replace(Bytes contents) {
    if (!makeFolder(folder())) {
        return false;
    }
    std::string temporary = (folder() / ("." + fileName() + ".XXXXXX")).native();
    const Descriptor file(::mkostemp(temporary.data(), O_CLOEXEC)); // mode 0600
    if (!file.isOpen()) {
        return false;
    }
    const bool replaced = writeAll(file.get(), contents) && ::fsync(file.get()) == 0 &&
                          ::rename(temporary.c_str(), (folder() / fileName()).c_str()) == 0;
    if (!replaced) {
        (void)::unlink(temporary.c_str()); // the setting is lost in any case
    }
    return replaced;
}

} // namespace NS::UserDefaultsFile
