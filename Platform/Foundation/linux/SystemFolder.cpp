#include "Platform/Foundation/linux/SystemFolder.h"

#include "Platform/Foundation/Clock.h"
#include "Platform/Foundation/linux/FileTimes.h"
#include "Platform/Foundation/linux/SystemPath.h"

#include <cerrno>
#include <dirent.h>
#include <fcntl.h>
#include <filesystem>
#include <string>
#include <string_view>
#include <system_error>
#include <unistd.h>
#include <utility>
#include <vector>

namespace NS {

namespace {

using Directory = std::unique_ptr<DIR, int (*)(DIR*)>;

Ref<Array> namesIn(DIR* directory) {
    std::vector<Ref<Object>> names;
    while (const dirent* const entry = ::readdir(directory)) {
        const std::string_view name(entry->d_name);
        if (name != "." && name != "..") {
            names.emplace_back(String::fromFileSystemRepresentation(name));
        }
    }
    return make<Array>(std::move(names));
}

// A name with a slash, or none at all, would lead elsewhere; and what is no entry is not found.
bool isName(std::string_view name) noexcept {
    return !name.empty() && name != "." && name != ".." && name.find('/') == std::string_view::npos;
}

class SystemFolder final : public FileFolder {
  public:
    explicit SystemFolder(Directory directory)
        : directory_(std::move(directory)), names_(namesIn(directory_.get())) {}

    const Array& names() const noexcept override { return names_; }

    std::optional<double> creationTimeOfItem(const String& name) override {
        const SystemPath text(name);
        struct statx status {};
        if (!isName(text.c_str()) ||
            ::statx(descriptor(), text.c_str(), AT_SYMLINK_NOFOLLOW, kFileTimes, &status) != 0) {
            return std::nullopt;
        }
        return creationSecondsOf(status) - kTimeIntervalSince1970;
    }

    bool removeItem(const String& name) override {
        const SystemPath text(name);
        if (!isName(text.c_str())) {
            return false;
        }
        // Mostly it is no folder, which needs no look at it first.
        if (::unlinkat(descriptor(), text.c_str(), 0) == 0) {
            return true;
        }
        // Of a folder most file systems say the one, some the other.
        return (errno == EISDIR || errno == EPERM) && removeFolder(text.c_str());
    }

  private:
    int descriptor() const noexcept { return ::dirfd(directory_.get()); }

    bool removeFolder(const char* name) const {
        std::error_code error;
        const auto removed = std::filesystem::remove_all(
            "/proc/self/fd/" + std::to_string(descriptor()) + "/" + name, error);
        return !error && removed > 0;
    }

    Directory directory_;
    Ref<Array> names_;
};

} // namespace

std::unique_ptr<FileFolder> openSystemFolder(const String& path) {
    Directory directory(::opendir(SystemPath(path).c_str()), &::closedir);
    return directory ? std::make_unique<SystemFolder>(std::move(directory)) : nullptr;
}

} // namespace NS
