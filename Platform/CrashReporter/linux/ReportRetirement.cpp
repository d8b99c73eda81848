#include "Platform/CrashReporter/linux/ReportRetirement.h"

#include "Platform/Foundation/linux/FileDescriptor.h"

#include <algorithm>
#include <cerrno>
#include <compare>
#include <cstdio>
#include <cstring>
#include <dirent.h>
#include <fcntl.h>
#include <memory>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

namespace NS {

namespace {

constexpr const char* kRetired = "Retired";
constexpr std::string_view kSuffix = ".crash";
constexpr std::string_view kMoment = "_0000-00-00-000000_";
constexpr int kMostOfOneName = 99;

struct Report {
    std::int64_t seconds;
    std::int64_t nanoseconds;
    std::string name;

    auto operator<=>(const Report&) const = default;
};

// Names what failed first.
class Failure {
  public:
    void note(const std::string& what) {
        if (text_.empty()) {
            text_ =
                what + ": " + std::strerror(errno); // NOLINT(concurrency-mt-unsafe): at the start
        }
    }
    const std::string& text() const noexcept { return text_; }

  private:
    std::string text_;
};

FileDescriptor openFolder(int parent, const char* name) {
    return FileDescriptor(::openat(parent, name, O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
}

// Whether text begins like a form, in which each '0' stands for any digit.
bool beginsLike(std::string_view text, std::string_view form) noexcept {
    const auto isLike = [](char shape, char character) {
        return shape == '0' ? character >= '0' && character <= '9' : character == shape;
    };
    return text.size() >= form.size() && std::equal(form.begin(), form.end(), text.begin(), isLike);
}

// The moment tells a process's reports from those of one whose longer name begins with its own.
bool isReportOf(std::string_view name, const std::string& process) {
    return name.starts_with(process) && name.ends_with(kSuffix) &&
           beginsLike(name.substr(process.size()), kMoment);
}

// The oldest first.
std::vector<Report> reportsIn(int folder, const std::string& process) {
    std::vector<Report> reports;
    // The listing closes what it reads from.
    FileDescriptor again = openFolder(folder, ".");
    const std::unique_ptr<DIR, int (*)(DIR*)> listing(::fdopendir(again.get()), &::closedir);
    if (!listing) {
        return reports;
    }
    (void)again.release();
    while (const dirent* const entry = ::readdir(listing.get())) {
        struct stat status {};
        if (isReportOf(entry->d_name, process) &&
            ::fstatat(folder, entry->d_name, &status, AT_SYMLINK_NOFOLLOW) == 0 &&
            S_ISREG(status.st_mode)) {
            reports.push_back({status.st_mtim.tv_sec, status.st_mtim.tv_nsec, entry->d_name});
        }
    }
    std::ranges::sort(reports);
    return reports;
}

// In place of nothing. File systems that cannot make sure of that are looked at first.
bool moveToUnused(int from, const char* name, int to, const char* target) {
    if (::renameat2(from, name, to, target, RENAME_NOREPLACE) == 0) {
        return true;
    }
    struct stat status {};
    if (errno != EINVAL) {
        return false;
    }
    if (::fstatat(to, target, &status, AT_SYMLINK_NOFOLLOW) == 0) {
        errno = EEXIST;
        return false;
    }
    return ::renameat(from, name, to, target) == 0;
}

bool retire(int folder, int retired, const std::string& name) {
    std::string target = name;
    for (int number = 2; !moveToUnused(folder, name.c_str(), retired, target.c_str()); ++number) {
        if (errno == ENOENT) {
            return true; // another process was faster
        }
        if (errno != EEXIST || number > kMostOfOneName) {
            return false;
        }
        target = name.substr(0, name.size() - kSuffix.size()) + '-' + std::to_string(number) +
                 std::string(kSuffix);
    }
    return true;
}

void removeOldest(int retired, const std::string& process, Failure& failure) {
    const std::vector<Report> reports = reportsIn(retired, process);
    const std::size_t surplus = reports.size() - std::min(reports.size(), kRetiredReports);
    for (std::size_t i = 0; i < surplus; ++i) {
        if (::unlinkat(retired, reports[i].name.c_str(), 0) != 0 && errno != ENOENT) {
            failure.note(reports[i].name);
        }
    }
}

} // namespace

std::string retireReports(const std::string& folder, const std::string& process) {
    Failure failure;
    const FileDescriptor reportsFolder = openFolder(AT_FDCWD, folder.c_str());
    if (!reportsFolder || ::faccessat(reportsFolder.get(), ".", W_OK | X_OK, AT_EACCESS) != 0) {
        failure.note(folder); // nor could a report be written
        return failure.text();
    }
    std::vector<Report> reports = reportsIn(reportsFolder.get(), process);
    if (!reports.empty()) {
        reports.pop_back();
    }
    if (!reports.empty()) {
        (void)::mkdirat(reportsFolder.get(), kRetired, 0700); // shows when it is opened
    }
    const FileDescriptor retired = openFolder(reportsFolder.get(), kRetired);
    if (!retired) {
        if (!reports.empty() || errno != ENOENT) {
            failure.note(kRetired);
        }
        return failure.text();
    }
    for (const Report& report : reports) {
        if (!retire(reportsFolder.get(), retired.get(), report.name)) {
            failure.note(report.name);
        }
    }
    removeOldest(retired.get(), process, failure);
    return failure.text();
}

} // namespace NS
