#pragma once

#include "Platform/Foundation/Property.h"

#include <cstdint>
#include <utility>

// Where a file or folder keeps its name. Any thread.
//
// Counts the renamings of the whole process, so that a listing can tell whether what it remembers
// of its entries' names still holds, without an entry knowing the listings that it is in.
class QVEntryName {
  public:
    // How many names have been replaced by another object, or by nothing, in any file or folder so
    // far. A first name does not count: giving one is part of making an entry.
    static std::uint64_t renamings() noexcept;

    NS::RefPtr<NS::Object> load() const noexcept { return name_.load(); }
    void store(NS::RefPtr<NS::Object> name) noexcept;
    // The same for an entry that no other thread knows of yet.
    void storeUnshared(NS::RefPtr<NS::Object> name) noexcept;
    template <class Look>
    void whileHeld(Look&& look) const {
        name_.whileHeld(std::forward<Look>(look));
    }

  private:
    NS::AtomicRef<NS::Object> name_;
};
