#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <elf.h>
#include <link.h>

// What tells a build of a program or library from all others. Safe in a signal handler, as long as
// the reading is.
namespace NS {

struct BuildId {
    std::array<std::uint8_t, 32> bytes{};
    std::size_t length = 0;

    bool operator==(const BuildId& other) const noexcept {
        return length == other.length &&
               std::equal(bytes.begin(), bytes.begin() + length, other.bytes.begin());
    }
};

// The notes of a program file or of its image in memory: the build id among them. `read(place,
// bytes, count)` gives count bytes of the notes, false when there are not so many.
template <class Read>
BuildId buildIdInNotes(std::uint64_t start, std::uint64_t size, const Read& read) noexcept {
    constexpr std::uint64_t kAlignment = 4;
    // A file has a few notes of some dozen bytes each.
    constexpr std::uint64_t kMost = 4096;
    const std::uint64_t end = std::min(size, kMost);
    std::uint64_t offset = 0;
    ElfW(Nhdr) note{};
    while (offset + sizeof note <= end && read(start + offset, &note, sizeof note)) {
        const std::uint64_t name = offset + sizeof note;
        const std::uint64_t content =
            name + (note.n_namesz + kAlignment - 1) / kAlignment * kAlignment;
        BuildId id;
        std::array<char, 4> owner{};
        if (note.n_type == NT_GNU_BUILD_ID && note.n_namesz == owner.size() &&
            note.n_descsz <= id.bytes.size() && content + note.n_descsz <= end &&
            read(start + name, owner.data(), owner.size()) &&
            std::memcmp(owner.data(), "GNU", owner.size()) == 0 &&
            read(start + content, id.bytes.data(), note.n_descsz)) {
            id.length = note.n_descsz;
            return id;
        }
        offset = content + (note.n_descsz + kAlignment - 1) / kAlignment * kAlignment;
    }
    return {};
}

} // namespace NS
