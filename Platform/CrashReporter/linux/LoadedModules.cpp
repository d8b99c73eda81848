#include "Platform/CrashReporter/linux/LoadedModules.h"

#include "Platform/CrashReporter/linux/FaultGuard.h"

#include <cerrno>
#include <fcntl.h>
#include <unistd.h>

namespace NS {

namespace {

// A line of the kernel's list: "5581e0a1b000-5581e0a2f000 r--p 00000000 fd:00 1234   /path".
struct Mapping {
    std::uint64_t start;
    std::uint64_t end;
    std::uint64_t offset;
    bool readable;
    bool executable;
    std::string_view path;
};

// Takes a hexadecimal number and the character behind it from the front of a line.
std::uint64_t takeHexadecimal(std::string_view& line) noexcept {
    std::uint64_t number = 0;
    while (!line.empty()) {
        const char digit = line.front();
        line.remove_prefix(1);
        if (digit >= '0' && digit <= '9') {
            number = number * 16 + static_cast<std::uint64_t>(digit - '0');
        } else if (digit >= 'a' && digit <= 'f') {
            number = number * 16 + static_cast<std::uint64_t>(digit - 'a' + 10);
        } else {
            break;
        }
    }
    return number;
}

// Takes a word and the blanks behind it.
std::string_view takeWord(std::string_view& line) noexcept {
    const std::size_t length = std::min(line.find(' '), line.size());
    const std::string_view word = line.substr(0, length);
    line.remove_prefix(length);
    line.remove_prefix(std::min(line.find_first_not_of(' '), line.size()));
    return word;
}

Mapping mappingOf(std::string_view line) noexcept {
    Mapping mapping{};
    mapping.start = takeHexadecimal(line);
    mapping.end = takeHexadecimal(line);
    const std::string_view rights = takeWord(line);
    mapping.readable = rights.starts_with('r');
    mapping.executable = rights.find('x') != std::string_view::npos;
    mapping.offset = takeHexadecimal(line);
    (void)takeWord(line); // the device
    (void)takeWord(line); // the file's number
    mapping.path = line;
    return mapping;
}

// Some of the kernel's own areas and of the devices' must not even be looked at.
bool mayHoldAProgram(std::string_view path) noexcept {
    return path == "[vdso]" || (path.starts_with('/') && !path.starts_with("/dev/"));
}

// What a program file begins with, in memory: the header and, in the same page, its table.
class Image {
  public:
    Image(std::uint64_t start, std::uint64_t end) noexcept : start_(start), end_(end) {
        valid_ = read(start_, &header_, sizeof header_) &&
                 std::memcmp(header_.e_ident, ELFMAG, SELFMAG) == 0 &&
                 header_.e_phentsize == sizeof(ElfW(Phdr));
    }

    bool isValid() const noexcept { return valid_; }

    // What the file's addresses were moved by.
    std::uint64_t bias() const noexcept {
        ElfW(Phdr) entry{};
        for (std::size_t i = 0; entryAt(i, entry); ++i) {
            if (entry.p_type == PT_LOAD && entry.p_offset == 0) {
                return start_ - entry.p_vaddr;
            }
        }
        return start_;
    }

    BuildId buildId() const noexcept {
        ElfW(Phdr) entry{};
        for (std::size_t i = 0; entryAt(i, entry); ++i) {
            if (entry.p_type != PT_NOTE) {
                continue;
            }
            const BuildId id = buildIdInNotes(
                bias() + entry.p_vaddr, entry.p_memsz,
                [this](std::uint64_t address, void* bytes, std::size_t count) noexcept {
                    return read(address, bytes, count);
                });
            if (id.length != 0) {
                return id;
            }
        }
        return {};
    }

  private:
    bool read(std::uint64_t address, void* bytes, std::size_t count) const noexcept {
        if (address < start_ || address > end_ || end_ - address < count) {
            return false;
        }
        std::memcpy(bytes, reinterpret_cast<const void*>(address), count);
        return true;
    }

    bool entryAt(std::size_t index, ElfW(Phdr) & entry) const noexcept {
        return index < header_.e_phnum && header_.e_phoff <= end_ - start_ &&
               read(start_ + header_.e_phoff + index * sizeof entry, &entry, sizeof entry);
    }

    std::uint64_t start_;
    std::uint64_t end_;
    bool valid_;
    ElfW(Ehdr) header_{};
};

} // namespace

std::string_view LoadedModule::name() const noexcept {
    const std::string_view text = pathText();
    const std::size_t slash = text.rfind('/');
    return slash == std::string_view::npos ? text : text.substr(slash + 1);
}

const LoadedModule* LoadedModules::at(std::uintptr_t address) const noexcept {
    for (const LoadedModule& module : list()) {
        if (module.holds(address)) {
            return &module;
        }
    }
    return nullptr;
}

void LoadedModules::take(std::string_view line) noexcept {
    const Mapping mapping = mappingOf(line);
    if (!mayHoldAProgram(mapping.path)) {
        return;
    }
    const std::string_view path = mapping.path.substr(0, sizeof(LoadedModule::path) - 1);
    if (isUnfinished_ && mapping.offset != 0 && modules_[count_].pathText() == path) {
        modules_[count_].end = mapping.end;
        hasCode_ = hasCode_ || mapping.executable;
        return;
    }
    finishLast();
    if (mapping.offset == 0 && mapping.readable && count_ < modules_.size()) {
        LoadedModule& module = modules_[count_];
        module.start = mapping.start;
        module.end = mapping.end;
        module.path[path.copy(module.path.data(), path.size())] = '\0';
        isUnfinished_ = true;
        hasCode_ = mapping.executable;
        headEnd_ = mapping.end;
    }
}

void LoadedModules::finishLast() noexcept {
    if (!isUnfinished_) {
        return;
    }
    isUnfinished_ = false;
    LoadedModule& module = modules_[count_];
    if (!hasCode_) {
        return;
    }
    bool isProgram = true;
    module.bias = module.start;
    module.buildId = {};
    // One that cannot be read any more may be why the process crashes: it is kept.
    (void)FaultGuard::run([&] {
        const Image image(module.start, headEnd_);
        isProgram = image.isValid();
        module.bias = isProgram ? image.bias() : module.bias;
        module.buildId = isProgram ? image.buildId() : BuildId{};
    });
    count_ += isProgram ? 1 : 0;
}

// Takes the whole lines at the front of the buffer, and gives the length of what is left of it.
std::size_t LoadedModules::takeLines(std::size_t used) noexcept {
    std::string_view rest(buffer_.data(), used);
    for (std::size_t end = rest.find('\n'); end != std::string_view::npos; end = rest.find('\n')) {
        take(rest.substr(0, end));
        rest.remove_prefix(end + 1);
    }
    if (rest.size() == buffer_.size()) {
        return 0; // so long a line is none of ours
    }
    std::memmove(buffer_.data(), rest.data(), rest.size());
    return rest.size();
}

void LoadedModules::read() noexcept {
    count_ = 0;
    isUnfinished_ = false;
    const int file = ::open("/proc/self/maps", O_RDONLY | O_CLOEXEC);
    if (file < 0) {
        return;
    }
    std::size_t used = 0;
    for (;;) {
        const ssize_t count = ::read(file, buffer_.data() + used, buffer_.size() - used);
        if (count < 0 && errno == EINTR) {
            continue;
        }
        if (count <= 0) {
            break;
        }
        used = takeLines(used + static_cast<std::size_t>(count));
    }
    (void)::close(file); // it was only read
    finishLast();
}

} // namespace NS
