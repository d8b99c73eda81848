#include "Platform/CrashReporter/linux/CrashReportFile.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace NS {

namespace {

// Above those that a program which closes its standard streams gives other meanings.
constexpr int kFirstDescriptor = 10;
constexpr unsigned kMostOfOneName = 99;

char forFileName(char character) noexcept {
    const bool safe = (character >= '0' && character <= '9') ||
                      (character >= 'A' && character <= 'Z') ||
                      (character >= 'a' && character <= 'z') || character == '.';
    return safe ? character : '-';
}

int openFolder(const char* path) noexcept {
    return ::open(path, O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
}

// Gives a closed descriptor the value that says so.
void close(int& descriptor) noexcept {
    if (descriptor >= 0) {
        (void)::close(descriptor); // there is nothing to be written
    }
    descriptor = -1;
}

} // namespace

bool CrashReportFile::prepare(std::string_view folder, std::string_view process,
                              std::string_view host) {
    folder_ << folder;
    process_ << process;
    for (const char character : host.empty() ? "localhost" : host) {
        const char safe = forFileName(character);
        host_ << std::string_view(&safe, 1);
    }
    int opened = openFolder(folder_.c_str());
    struct stat status {};
    if (::fstat(opened, &status) != 0) {
        return false;
    }
    device_ = status.st_dev;
    number_ = status.st_ino;
    descriptor_ = ::fcntl(opened, F_DUPFD_CLOEXEC, kFirstDescriptor);
    for (int& spare : spares_) {
        spare = ::fcntl(opened, F_DUPFD_CLOEXEC, kFirstDescriptor);
    }
    close(opened);
    return descriptor_ >= 0;
}

// The number may mean another file by now, where a program closes all that it finds open.
bool CrashReportFile::hasFolder() const noexcept {
    struct stat status {};
    return ::fstat(descriptor_, &status) == 0 && status.st_dev == device_ &&
           status.st_ino == number_ && status.st_nlink > 0;
}

int CrashReportFile::openAgain() const noexcept {
    FixedText<4096> path;
    for (const char character : folder_.view()) {
        if (character == '/' && !path.view().empty()) {
            (void)::mkdir(path.c_str(), 0700); // whether it is there now shows at the end
        }
        path << std::string_view(&character, 1);
    }
    (void)::mkdir(path.c_str(), 0700);
    return openFolder(path.c_str());
}

int CrashReportFile::createNext(unsigned number, const LocalTime& time) noexcept {
    name_.clear();
    name_ << process_.view() << "_";
    name_.decimal(static_cast<unsigned>(time.year), 4) << "-";
    name_.decimal(static_cast<unsigned>(time.month), 2) << "-";
    name_.decimal(static_cast<unsigned>(time.day), 2) << "-";
    name_.decimal(static_cast<unsigned>(time.hour), 2);
    name_.decimal(static_cast<unsigned>(time.minute), 2);
    name_.decimal(static_cast<unsigned>(time.second), 2) << "_" << host_.view();
    if (number > 1) {
        name_ << "-";
        name_.decimal(number);
    }
    name_ << ".crash";
    return ::openat(descriptor_, name_.c_str(),
                    O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600);
}

int CrashReportFile::create(const LocalTime& time) noexcept {
    for (int& spare : spares_) {
        close(spare);
    }
    if (!hasFolder()) {
        descriptor_ = openAgain();
    }
    int file = -1;
    for (unsigned number = 1; file < 0 && number <= kMostOfOneName; ++number) {
        file = createNext(number, time);
        if (file < 0 && errno != EEXIST) {
            break;
        }
    }
    return file;
}

void CrashReportFile::remove() const noexcept {
    (void)::unlinkat(descriptor_, name_.c_str(), 0); // an empty report then stays
}

} // namespace NS
