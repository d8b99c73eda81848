#include "Benchmarks/Support/RawFolder.h"

#include "Platform/Foundation/linux/FileDescriptor.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdint>
#include <dirent.h>
#include <fcntl.h>
#include <string>
#include <string_view>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>
#include <vector>

namespace Benchmarks {

namespace {

namespace fs = std::filesystem;

struct Entry {
    std::int64_t created; // in nanoseconds
    std::size_t name;     // where it begins among the names
};

// All names, a NUL behind each, and the entries that have them.
struct Listing {
    std::string names;
    std::vector<Entry> entries;
};

void check(bool holds, const fs::path& path) {
    if (!holds) {
        throw std::system_error(errno, std::generic_category(), path);
    }
}

void addEntries(Listing& listing, const std::byte* bytes, std::size_t length) {
    for (std::size_t at = 0; at < length;) {
        const auto* const entry = reinterpret_cast<const dirent64*>(bytes + at);
        const std::string_view name(entry->d_name);
        if (name != "." && name != "..") {
            listing.entries.push_back({0, listing.names.size()});
            listing.names.append(name).push_back('\0');
        }
        at += entry->d_reclen;
    }
}

Listing list(int folder, const fs::path& path) {
    alignas(dirent64) std::array<std::byte, 32'768> buffer;
    Listing listing;
    for (;;) {
        const ssize_t length = ::getdents64(folder, buffer.data(), buffer.size());
        check(length >= 0, path);
        if (length == 0) {
            return listing;
        }
        addEntries(listing, buffer.data(), static_cast<std::size_t>(length));
    }
}

std::int64_t creationOf(int folder, const char* name) {
    struct statx status {};
    check(::statx(folder, name, AT_SYMLINK_NOFOLLOW, STATX_BASIC_STATS | STATX_BTIME, &status) == 0,
          name);
    return status.stx_btime.tv_sec * 1'000'000'000 + status.stx_btime.tv_nsec;
}

// Of two entries of one date the one that was listed first counts as newer.
bool isNewer(const Entry& a, const Entry& b) noexcept {
    return a.created != b.created ? a.created > b.created : a.name < b.name;
}

Entry oldestKept(std::vector<Entry> entries, std::size_t kept) {
    const auto last = entries.begin() + static_cast<std::ptrdiff_t>(kept - 1);
    std::ranges::nth_element(entries, last, isNewer);
    return *last;
}

} // namespace

void fillRaw(const fs::path& folder, std::size_t files) {
    const NS::FileDescriptor directory(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    for (std::size_t i = 0; i < files; ++i) {
        const std::string name = "FELog-2026-11-16 06:56:27." + std::to_string(i) + ".txt";
        const NS::FileDescriptor file(
            ::openat(directory.get(), name.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600));
        check(static_cast<bool>(file), folder / name);
    }
}

void pruneRaw(const fs::path& folder, std::size_t kept) {
    const NS::FileDescriptor directory(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    check(static_cast<bool>(directory), folder);
    Listing listing = list(directory.get(), folder);
    for (Entry& entry : listing.entries) {
        entry.created = creationOf(directory.get(), &listing.names[entry.name]);
    }
    if (listing.entries.size() <= kept) {
        return;
    }
    const Entry oldest = oldestKept(listing.entries, kept);
    for (const Entry& entry : listing.entries) {
        if (isNewer(oldest, entry)) {
            check(::unlinkat(directory.get(), &listing.names[entry.name], 0) == 0, folder);
        }
    }
}

} // namespace Benchmarks
