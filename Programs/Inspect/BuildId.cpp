#include "Programs/Inspect/BuildId.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <elf.h>
#include <link.h>
#include <string_view>

namespace Inspection {

namespace {

// A program has a dozen segments; its notes come to some hundred bytes.
constexpr std::size_t kMostSegments = 256;
constexpr std::uint64_t kLongestNotes = std::uint64_t{64} << 10U;
constexpr std::size_t kLongestId = 64;

template <class T>
std::optional<T> valueAt(const ProgramFile& file, std::uint64_t offset) {
    const auto bytes = file.bytesAt(offset, sizeof(T));
    if (!bytes) {
        return std::nullopt;
    }
    T value;
    std::memcpy(&value, bytes->data(), sizeof value);
    return value;
}

constexpr std::uint64_t padded(std::uint64_t length, std::uint64_t alignment) noexcept {
    return (length + alignment - 1) / alignment * alignment;
}

std::string hexadecimal(std::string_view bytes) {
    constexpr std::string_view kDigits = "0123456789abcdef";
    std::string digits;
    for (const char each : bytes) {
        const auto byte = static_cast<unsigned char>(each);
        digits += {kDigits[byte >> 4U], kDigits[byte & 0xFU]};
    }
    return digits;
}

// The build id among notes, each of which is a head, a name and contents, the contents and the next
// note aligned. Lengths have 32 bits: their sums do not overflow.
std::optional<std::string> buildIdIn(std::string_view notes, std::uint64_t alignment) {
    ElfW(Nhdr) head{};
    while (notes.size() >= sizeof head) {
        std::memcpy(&head, notes.data(), sizeof head);
        const std::uint64_t contents = padded(sizeof head + head.n_namesz, alignment);
        if (contents + head.n_descsz > notes.size()) {
            return std::nullopt;
        }
        if (head.n_type == NT_GNU_BUILD_ID && head.n_descsz > 0 && head.n_descsz <= kLongestId &&
            notes.substr(sizeof head, head.n_namesz) == std::string_view("GNU", 4)) {
            return hexadecimal(notes.substr(contents, head.n_descsz));
        }
        const std::uint64_t next = padded(contents + head.n_descsz, alignment);
        notes.remove_prefix(std::min<std::uint64_t>(next, notes.size()));
    }
    return std::nullopt;
}

bool isOfThisMachine(const ElfW(Ehdr) & header) noexcept {
    constexpr std::uint16_t kOne = 1;
    const bool isLittle = reinterpret_cast<const unsigned char&>(kOne) == 1;
    return std::memcmp(header.e_ident, ELFMAG, SELFMAG) == 0 &&
           header.e_ident[EI_CLASS] == (sizeof(void*) == 8 ? ELFCLASS64 : ELFCLASS32) &&
           header.e_ident[EI_DATA] == (isLittle ? ELFDATA2LSB : ELFDATA2MSB) &&
           header.e_phentsize == sizeof(ElfW(Phdr));
}

} // namespace

std::optional<std::string> buildIdOf(const ProgramFile& file) {
    const auto header = valueAt<ElfW(Ehdr)>(file, 0);
    if (!header || !isOfThisMachine(*header)) {
        return std::nullopt;
    }
    const std::size_t segments = std::min<std::size_t>(header->e_phnum, kMostSegments);
    for (std::size_t i = 0; i < segments; ++i) {
        const auto segment = valueAt<ElfW(Phdr)>(file, header->e_phoff + i * sizeof(ElfW(Phdr)));
        if (!segment || segment->p_type != PT_NOTE || segment->p_filesz > kLongestNotes) {
            continue;
        }
        const auto notes = file.bytesAt(segment->p_offset, segment->p_filesz);
        const auto id = notes ? buildIdIn(*notes, segment->p_align == 8 ? 8 : 4) : std::nullopt;
        if (id) {
            return id;
        }
    }
    return std::nullopt;
}

} // namespace Inspection
