#include "Platform/Ports/linux/NameFile.h"

#include "Platform/Ports/PortLimits.h"

#include <array>
#include <chrono>
#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>
#include <vector>

namespace NS {

namespace {

constexpr std::size_t kHexLength = 32;
constexpr std::size_t kEntryLength = 2 * kHexLength + 2;

// Who tidies up is told from an owner by the length of the lock, so that whoever finds a name
// locked knows at once whether it is taken or about to go.
constexpr off_t kOwnersLock = 1;
constexpr off_t kSweepersLock = 2;
// A sweeper holds its lock for a few system calls, between which a busy machine may keep it from
// running; one that was stopped there is not waited for any longer.
constexpr std::chrono::seconds kSweepersTime{5};
constexpr std::chrono::microseconds kSweepersPause{100};

bool isUsableName(const std::string& name) {
    return !name.empty() && name.size() <= PortLimits::kName && name.front() != '.' &&
           name.find('/') == std::string::npos && name.find('\0') == std::string::npos;
}

// O_NONBLOCK: whatever else may stand there under that name, opening it must not wait.
FileDescriptor openFile(const RuntimeFolder& folder, const std::string& name, int flags) {
    constexpr mode_t kOwnersOnly = S_IRUSR | S_IWUSR;
    FileDescriptor file(::openat(folder.descriptor(), name.c_str(),
                                 flags | O_NOFOLLOW | O_CLOEXEC | O_NONBLOCK, kOwnersOnly));
    struct stat status {};
    const bool usable = file && ::fstat(file.get(), &status) == 0 && S_ISREG(status.st_mode);
    return usable ? std::move(file) : FileDescriptor();
}

struct flock exclusive(off_t length) noexcept {
    struct flock range {};
    range.l_type = F_WRLCK;
    range.l_whence = SEEK_SET;
    range.l_len = length;
    return range;
}

// Locks of the open file, not of the process: two ports of one process exclude each other too.
bool lock(const FileDescriptor& file, off_t length) noexcept {
    struct flock range = exclusive(length);
    return ::fcntl(file.get(), F_OFD_SETLK, &range) == 0;
}

// The length of the lock that another open file has on it; 0 for none.
off_t lockOfAnother(const FileDescriptor& file) noexcept {
    struct flock range = exclusive(kSweepersLock);
    const bool asked = ::fcntl(file.get(), F_OFD_GETLK, &range) == 0;
    return !asked ? kOwnersLock : (range.l_type == F_UNLCK ? 0 : range.l_len);
}

// A file that was locked here may have lost its name before.
bool isStillNamed(const RuntimeFolder& folder, const std::string& name,
                  const FileDescriptor& file) noexcept {
    return isNamed(folder.descriptor(), name.c_str(), file.get());
}

struct Content {
    std::size_t length;
    std::optional<NameEntry> entry;
};

Content contentOf(const FileDescriptor& file) {
    std::array<char, kEntryLength + 1> text{};
    const ssize_t length = ::pread(file.get(), text.data(), text.size(), 0);
    if (length < 0) {
        return {text.size(), std::nullopt};
    }
    return {static_cast<std::size_t>(length),
            NameEntry::parse({text.data(), static_cast<std::size_t>(length)})};
}

// The locked file of a name, made when there was none.
FileDescriptor lockName(const RuntimeFolder& folder, const std::string& name) {
    const auto deadline = std::chrono::steady_clock::now() + kSweepersTime;
    do {
        FileDescriptor file = openFile(folder, name, O_RDWR | O_CREAT);
        if (!file) {
            return {};
        }
        if (lock(file, kOwnersLock)) {
            if (isStillNamed(folder, name, file)) {
                return file;
            }
        } else if (lockOfAnother(file) == kOwnersLock) {
            return {};
        } else {
            std::this_thread::sleep_for(kSweepersPause);
        }
    } while (std::chrono::steady_clock::now() < deadline);
    return {};
}

// Whatever else a person may have put there stays.
void removeLeftover(const RuntimeFolder& folder, const std::string& name) {
    const FileDescriptor file = openFile(folder, name, O_RDWR);
    if (!file || lockOfAnother(file) != 0 || !lock(file, kSweepersLock) ||
        !isStillNamed(folder, name, file)) {
        return;
    }
    const Content content = contentOf(file);
    if (content.entry) {
        folder.unlink(content.entry->socketName);
    }
    if (content.entry || content.length == 0) {
        folder.unlink(name);
    }
}

std::vector<std::string> namesIn(const RuntimeFolder& folder) {
    std::vector<std::string> names;
    FileDescriptor copy = folder.duplicate();
    DIR* const directory = copy ? ::fdopendir(copy.get()) : nullptr;
    if (directory == nullptr) {
        return names;
    }
    (void)copy.release(); // closedir() closes it
    ::rewinddir(directory);
    while (const dirent* const entry = ::readdir(directory)) {
        if (isUsableName(entry->d_name) &&
            (entry->d_type == DT_REG || entry->d_type == DT_UNKNOWN)) {
            names.emplace_back(entry->d_name);
        }
    }
    (void)::closedir(directory);
    return names;
}

} // namespace

std::string NameEntry::text() const {
    return socketName + " " + port.hex() + "\n";
}

std::optional<NameEntry> NameEntry::parse(std::string_view text) {
    if (text.size() != kEntryLength || text[kHexLength] != ' ' || text.back() != '\n') {
        return std::nullopt;
    }
    // The socket's name has the form of an identity, so that it leads nowhere else.
    const auto socket = PortIdentity::fromHex(text.substr(0, kHexLength));
    const auto port = PortIdentity::fromHex(text.substr(kHexLength + 1, kHexLength));
    if (!socket || !port) {
        return std::nullopt;
    }
    return NameEntry{socket->hex(), *port};
}

std::optional<NameEntry> NameEntry::read(const RuntimeFolder& folder, const std::string& name) {
    const FileDescriptor file =
        isUsableName(name) ? openFile(folder, name, O_RDONLY) : FileDescriptor();
    return file ? contentOf(file).entry : std::nullopt;
}

std::unique_ptr<NameFile> NameFile::claim(RuntimeFolder folder, const std::string& name) {
    FileDescriptor locked = isUsableName(name) ? lockName(folder, name) : FileDescriptor();
    if (!locked) {
        return nullptr;
    }
    if (const auto left = contentOf(locked).entry) {
        folder.unlink(left->socketName);
    }
    return std::make_unique<NameFile>(std::move(folder), name, std::move(locked));
}

NameFile::NameFile(RuntimeFolder folder, std::string name, FileDescriptor locked)
    : folder_(std::move(folder)), name_(std::move(name)), locked_(std::move(locked)),
      process_(::getpid()) {}

NameFile::~NameFile() {
    // While it is locked: nobody else can have the name, unless somebody took the file away.
    if (process_ == ::getpid() && isStillNamed(folder_, name_, locked_)) {
        folder_.unlink(name_);
    }
}

bool NameFile::write(const NameEntry& entry) const {
    const std::string text = entry.text();
    return ::ftruncate(locked_.get(), 0) == 0 && ::pwrite(locked_.get(), text.data(), text.size(),
                                                          0) == static_cast<ssize_t>(text.size());
}

void NameFile::sweep(const RuntimeFolder& folder) {
    for (const std::string& name : namesIn(folder)) {
        removeLeftover(folder, name);
    }
}

} // namespace NS
