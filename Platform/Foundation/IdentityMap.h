#pragma once

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace NS {

class Object;

// A number for each object, found by the object's address. Objects must live as long as the map, or
// another one may come to stand at the same address.
//
// Open addressing with linear probing, at most half full.
class IdentityMap {
  public:
    // Makes room for as many objects, so that taking them in moves none.
    void reserve(std::size_t count) {
        if (2 * count > slots_.size()) {
            resize(std::bit_ceil(std::max(2 * count, kFirstSize)));
        }
    }

    // The object's number, to be read or set; 0 for an object that is new to the map. Valid until
    // the next call.
    std::uint32_t& numberOf(const Object* object) {
        if ((count_ + 1) * 2 > slots_.size()) {
            resize(slots_.empty() ? kFirstSize : slots_.size() * 2);
        }
        Slot& slot = slotOf(object);
        if (slot.object == nullptr) {
            slot.object = object;
            ++count_;
        }
        return slot.number;
    }

  private:
    struct Slot {
        const Object* object = nullptr;
        std::uint32_t number = 0;
    };

    static constexpr std::size_t kFirstSize = 32;

    // Addresses differ in their middle bits; the multiplication carries them to the top.
    std::size_t firstSlot(const Object* object) const noexcept {
        const auto address = std::uint64_t{std::bit_cast<std::uintptr_t>(object)};
        return static_cast<std::size_t>(address * 0x9E3779B97F4A7C15ULL >> shift_);
    }

    Slot& slotOf(const Object* object) noexcept {
        std::size_t slot = firstSlot(object);
        while (slots_[slot].object != nullptr && slots_[slot].object != object) {
            slot = (slot + 1) & (slots_.size() - 1);
        }
        return slots_[slot];
    }

    // To a power of two.
    void resize(std::size_t size) {
        std::vector<Slot> before(size);
        before.swap(slots_);
        shift_ = 64U - static_cast<unsigned>(std::countr_zero(slots_.size()));
        for (const Slot& slot : before) {
            if (slot.object != nullptr) {
                slotOf(slot.object) = slot;
            }
        }
    }

    std::vector<Slot> slots_;
    std::size_t count_ = 0;
    unsigned shift_ = 64;
};

} // namespace NS
