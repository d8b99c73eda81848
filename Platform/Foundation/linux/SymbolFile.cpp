#include "Platform/Foundation/linux/SymbolFile.h"

#include <cerrno>
#include <fcntl.h>
#include <unistd.h>

namespace NS {

namespace {

// Far beyond any program; it keeps the time within bounds that a damaged file can take.
constexpr std::uint64_t kMostSymbols = std::uint64_t{4} << 20U;
constexpr std::size_t kSymbolsAtOnce = 170;

// The part of a symbol's information that ELF64_ST_TYPE and ELF32_ST_TYPE give alike.
bool isFunction(const ElfW(Sym) & symbol) noexcept {
    const unsigned type = symbol.st_info & 0xFU;
    return symbol.st_shndx != SHN_UNDEF && (type == STT_FUNC || type == STT_GNU_IFUNC);
}

// Some functions stand within others. One without a size may end anywhere: it answers nothing.
void consider(const ElfW(Sym) & symbol, std::uint64_t names, SymbolQuery& query) noexcept {
    const bool holds =
        symbol.st_value <= query.address && query.address - symbol.st_value < symbol.st_size;
    if (holds && (!query.found || symbol.st_value > query.start)) {
        query.found = true;
        query.start = symbol.st_value;
        query.name = names + symbol.st_name;
    }
}

} // namespace

SymbolFile::SymbolFile(const char* path) noexcept
    : file_(::open(path, O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY)) {
    const bool usable =
        read(0, &header_, sizeof header_) && std::memcmp(header_.e_ident, ELFMAG, SELFMAG) == 0 &&
        header_.e_phentsize == sizeof(ElfW(Phdr)) && header_.e_shentsize == sizeof(ElfW(Shdr)) &&
        (findTable(SHT_SYMTAB) || findTable(SHT_DYNSYM));
    if (!usable) {
        close();
    }
}

SymbolFile::SymbolFile(const char* path, const BuildId& build) noexcept : SymbolFile(path) {
    if (isOpen() && !isOf(build)) {
        close();
    }
}

SymbolFile::~SymbolFile() {
    close();
}

void SymbolFile::close() noexcept {
    if (file_ >= 0) {
        (void)::close(file_); // it was only read
    }
    file_ = -1;
}

bool SymbolFile::read(std::uint64_t offset, void* bytes, std::size_t count) const noexcept {
    std::size_t done = 0;
    while (done < count) {
        const ssize_t length = ::pread(file_, static_cast<char*>(bytes) + done, count - done,
                                       static_cast<off_t>(offset + done));
        if (length < 0 && errno == EINTR) {
            continue;
        }
        if (length <= 0) {
            return false;
        }
        done += static_cast<std::size_t>(length);
    }
    return true;
}

bool SymbolFile::isOf(const BuildId& build) const noexcept {
    for (std::size_t i = 0; i < header_.e_phnum; ++i) {
        ElfW(Phdr) entry{};
        if (!read(header_.e_phoff + i * sizeof entry, &entry, sizeof entry)) {
            return false;
        }
        if (entry.p_type != PT_NOTE) {
            continue;
        }
        const BuildId id =
            buildIdInNotes(entry.p_offset, entry.p_filesz,
                           [this](std::uint64_t offset, void* bytes, std::size_t count) noexcept {
                               return read(offset, bytes, count);
                           });
        if (id.length != 0) {
            return id == build;
        }
    }
    return build.length == 0;
}

bool SymbolFile::findTable(std::uint32_t type) noexcept {
    for (std::size_t i = 0; i < header_.e_shnum; ++i) {
        ElfW(Shdr) section{};
        ElfW(Shdr) names{};
        if (!read(header_.e_shoff + i * sizeof section, &section, sizeof section)) {
            return false;
        }
        if (section.sh_type == type && section.sh_entsize == sizeof(ElfW(Sym)) &&
            section.sh_link < header_.e_shnum &&
            read(header_.e_shoff + section.sh_link * sizeof names, &names, sizeof names)) {
            symbols_ = {section.sh_offset, section.sh_size};
            names_ = {names.sh_offset, names.sh_size};
            return true;
        }
    }
    return false;
}

void SymbolFile::find(std::span<SymbolQuery> queries) const noexcept {
    std::array<ElfW(Sym), kSymbolsAtOnce> symbols{};
    std::uint64_t left = std::min(symbols_.size / sizeof symbols[0], kMostSymbols);
    std::uint64_t offset = symbols_.offset;
    while (left > 0) {
        const auto count = static_cast<std::size_t>(std::min<std::uint64_t>(left, symbols.size()));
        if (!read(offset, symbols.data(), count * sizeof symbols[0])) {
            return;
        }
        for (const ElfW(Sym) & symbol : std::span(symbols).first(count)) {
            if (!isFunction(symbol) || symbol.st_name >= names_.size) {
                continue;
            }
            for (SymbolQuery& query : queries) {
                consider(symbol, names_.offset, query);
            }
        }
        offset += count * sizeof symbols[0];
        left -= count;
    }
}

void SymbolFile::name(const SymbolQuery& query, std::span<char> place) const noexcept {
    const std::uint64_t left = names_.offset + names_.size - query.name;
    const auto most = static_cast<std::size_t>(std::min<std::uint64_t>(left, place.size() - 1));
    // The table's end may be nearer than a page's.
    place[read(query.name, place.data(), most) ? most : 0] = '\0';
}

} // namespace NS
