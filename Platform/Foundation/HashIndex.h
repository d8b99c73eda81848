#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <vector>

namespace NS {

// Finds positions in a vector of entries by hash, so that entries can stand in the order in which
// they came. Holds positions only; the caller keeps the entries and compares them.
//
// Open addressing with linear probing, at most half full. Small collections are searched entry by
// entry and have no index at all.
class HashIndex {
  public:
    static constexpr std::size_t kUnindexedEntries = 8;
    static constexpr std::size_t kNotFound = std::numeric_limits<std::size_t>::max();

    // The position whose entry satisfies matches(position), or kNotFound. Calls hash() only when
    // there is an index.
    template <class Hash, class Matches>
    std::size_t find(Hash&& hash, std::size_t entryCount, Matches&& matches) const {
        if (slots_.empty()) {
            for (std::size_t position = 0; position < entryCount; ++position) {
                if (matches(position)) {
                    return position;
                }
            }
            return kNotFound;
        }
        for (std::size_t slot = firstSlot(hash()); slots_[slot] != kEmpty; slot = nextSlot(slot)) {
            if (matches(slots_[slot])) {
                return slots_[slot];
            }
        }
        return kNotFound;
    }

    // Notes that an entry was appended; hashAt(position) gives any entry's hash.
    template <class HashAt>
    void appended(std::size_t entryCount, HashAt&& hashAt) {
        if (entryCount <= kUnindexedEntries) {
            return;
        }
        if (entryCount * 2 > slots_.size()) {
            rebuild(entryCount, hashAt);
        } else {
            place(entryCount - 1, hashAt(entryCount - 1));
        }
    }

    // Starts afresh after entries moved or went.
    template <class HashAt>
    void rebuild(std::size_t entryCount, HashAt&& hashAt) {
        slots_.clear();
        if (entryCount <= kUnindexedEntries) {
            return;
        }
        slots_.assign(std::bit_ceil(entryCount * 4), kEmpty);
        for (std::size_t position = 0; position < entryCount; ++position) {
            place(position, hashAt(position));
        }
    }

  private:
    static constexpr std::uint32_t kEmpty = std::numeric_limits<std::uint32_t>::max();

    // Spreads hashes that differ in their high bits only (Fibonacci hashing).
    std::size_t firstSlot(std::size_t hash) const noexcept {
        return (hash * 0x9E3779B97F4A7C15ULL >> 32U) & (slots_.size() - 1);
    }
    std::size_t nextSlot(std::size_t slot) const noexcept {
        return (slot + 1) & (slots_.size() - 1);
    }

    void place(std::size_t position, std::size_t hash) {
        std::size_t slot = firstSlot(hash);
        while (slots_[slot] != kEmpty) {
            slot = nextSlot(slot);
        }
        slots_[slot] = static_cast<std::uint32_t>(position);
    }

    std::vector<std::uint32_t> slots_;
};

} // namespace NS
