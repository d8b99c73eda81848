#include "Platform/Ports/linux/Registration.h"

#include "Platform/Ports/PortLimits.h"
#include "Platform/Ports/linux/Connection.h"
#include "Platform/Ports/linux/Endpoints.h"
#include "Platform/Ports/linux/ExitCleanup.h"

#include <array>
#include <cerrno>
#include <ctime>
#include <dirent.h>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <vector>

namespace NS {

namespace {

constexpr std::size_t kHexLength = 32;
constexpr int kClaimAttempts = 100;
constexpr time_t kOrphanAge = 60;

bool isUsableName(const std::string& name) {
    return !name.empty() && name.size() <= PortLimits::kName && name.front() != '.' &&
           name.find('/') == std::string::npos && name.find('\0') == std::string::npos;
}

FileDescriptor openName(const RuntimeFolder& folder, const std::string& name, int flags) {
    return FileDescriptor(::openat(folder.descriptor(), name.c_str(),
                                   flags | O_NOFOLLOW | O_CLOEXEC | O_NONBLOCK, 0600));
}

bool lock(const FileDescriptor& file) {
    return ::flock(file.get(), LOCK_EX | LOCK_NB) == 0;
}

// An owner that gave the name up may have unlinked the very file that was locked here.
bool isStillNamed(const RuntimeFolder& folder, const std::string& name,
                  const FileDescriptor& file) {
    struct stat named {};
    struct stat held {};
    return ::fstatat(folder.descriptor(), name.c_str(), &named, AT_SYMLINK_NOFOLLOW) == 0 &&
           ::fstat(file.get(), &held) == 0 && named.st_ino == held.st_ino &&
           named.st_dev == held.st_dev;
}

bool hasLiveOwner(const RuntimeFolder& folder, const std::string& name) {
    const auto entry = NameEntry::read(folder, name);
    return entry && Connection::connectTo(folder, entry->socketName);
}

void pause() {
    constexpr timespec kMillisecond{0, 1'000'000};
    (void)::nanosleep(&kMillisecond, nullptr);
}

// The locked file of a name. Somebody who only tidies up holds the lock for a moment; a live owner
// answers at its socket.
FileDescriptor lockName(const RuntimeFolder& folder, const std::string& name) {
    for (int attempt = 0; attempt < kClaimAttempts; ++attempt) {
        FileDescriptor file = openName(folder, name, O_RDWR | O_CREAT);
        if (!file) {
            return {};
        }
        if (lock(file)) {
            if (isStillNamed(folder, name, file)) {
                return file;
            }
        } else if (hasLiveOwner(folder, name)) {
            return {};
        } else {
            pause();
        }
    }
    return {};
}

void unlinkEntry(const RuntimeFolder& folder, const std::string& name) {
    (void)::unlinkat(folder.descriptor(), name.c_str(), 0); // gone already is as good
}

// A socket whose owner died before it wrote the name's file. A young one may be about to.
void removeOrphan(const RuntimeFolder& folder, const std::string& socketName,
                  const struct stat& status) {
    if (::time(nullptr) - status.st_ctime > kOrphanAge &&
        !Connection::connectTo(folder, socketName)) {
        unlinkEntry(folder, socketName);
    }
}

void removeLeftover(const RuntimeFolder& folder, const std::string& name) {
    const FileDescriptor file = openName(folder, name, O_RDONLY);
    if (!file || !lock(file) || !isStillNamed(folder, name, file)) {
        return;
    }
    if (const auto entry = NameEntry::read(folder, name)) {
        unlinkEntry(folder, entry->socketName);
    }
    unlinkEntry(folder, name);
}

std::vector<std::string> entriesOf(const RuntimeFolder& folder) {
    std::vector<std::string> names;
    FileDescriptor copy = folder.duplicate();
    DIR* const directory = copy ? ::fdopendir(copy.get()) : nullptr;
    if (directory == nullptr) {
        return names;
    }
    (void)copy.release(); // closedir() closes it
    ::rewinddir(directory);
    while (const dirent* const entry = ::readdir(directory)) {
        if (entry->d_name[0] != '.') {
            names.emplace_back(entry->d_name);
        }
    }
    (void)::closedir(directory);
    return names;
}

// Takes away what dead processes left behind.
void sweep(const RuntimeFolder& folder) {
    for (const std::string& name : entriesOf(folder)) {
        struct stat status {};
        if (::fstatat(folder.descriptor(), name.c_str(), &status, AT_SYMLINK_NOFOLLOW) != 0) {
            continue;
        }
        if (S_ISSOCK(status.st_mode)) {
            removeOrphan(folder, name, status);
        } else if (S_ISREG(status.st_mode)) {
            removeLeftover(folder, name);
        }
    }
}

} // namespace

std::string NameEntry::text() const {
    return socketName + " " + port.hex() + "\n";
}

std::optional<NameEntry> NameEntry::parse(std::string_view text) {
    if (text.size() != kHexLength * 2 + 2 || text[kHexLength] != ' ' || text.back() != '\n') {
        return std::nullopt;
    }
    const auto socket = PortIdentity::fromHex(text.substr(0, kHexLength));
    const auto port = PortIdentity::fromHex(text.substr(kHexLength + 1, kHexLength));
    if (!socket || !port) {
        return std::nullopt;
    }
    return NameEntry{socket->hex(), *port};
}

std::optional<NameEntry> NameEntry::read(const RuntimeFolder& folder, const std::string& name) {
    const FileDescriptor file = openName(folder, name, O_RDONLY);
    std::array<char, kHexLength * 2 + 3> text{};
    const ssize_t length = file ? ::pread(file.get(), text.data(), text.size(), 0) : -1;
    return length < 0 ? std::nullopt : parse({text.data(), static_cast<std::size_t>(length)});
}

std::unique_ptr<Registration> Registration::claim(const std::string& name, LocalEndpoint& owner) {
    std::optional<RuntimeFolder> folder = RuntimeFolder::open();
    if (!folder || !isUsableName(name)) {
        return nullptr;
    }
    sweep(*folder);
    FileDescriptor held = lockName(*folder, name);
    if (!held) {
        return nullptr;
    }
    const NameEntry entry{PortIdentity::random().hex(), owner.identity()};
    const RefPtr<Listener> listener = Listener::listenOn(*folder, entry.socketName, owner);
    if (!listener) {
        return nullptr;
    }
    auto registration = std::make_unique<Registration>(name, entry.socketName, std::move(*folder),
                                                       std::move(held), Ref<Listener>(*listener));
    // Last: whoever reads it finds the socket listening.
    const std::string text = entry.text();
    const bool written = ::pwrite(registration->lock_.get(), text.data(), text.size(), 0) ==
                         static_cast<ssize_t>(text.size());
    return written ? std::move(registration) : nullptr;
}

Registration::Registration(std::string name, std::string socketName, RuntimeFolder folder,
                           FileDescriptor lock, Ref<Listener> listener)
    : name_(std::move(name)), socketName_(std::move(socketName)), folder_(std::move(folder)),
      lock_(std::move(lock)), listener_(std::move(listener)),
      cleanupSlot_(ExitCleanup::add(folder_.descriptor(), name_.c_str(), socketName_.c_str())),
      process_(::getpid()) {}

Registration::~Registration() {
    listener_->forgetOwner();
    if (process_ != ::getpid()) {
        return;
    }
    ExitCleanup::remove(cleanupSlot_);
    unlinkEntry(folder_, socketName_);
    unlinkEntry(folder_, name_);
}

} // namespace NS
