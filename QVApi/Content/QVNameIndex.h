#pragma once

#include "Platform/Foundation/Array.h"
#include "Platform/Foundation/IdentityMap.h"

#include <cstdint>

// The name objects of a list's entries, for whoever puts one entry after another into it: most
// names are no entry's yet, and it tells so without looking at the entries.
//
// The list belongs to others as well, and entries can be renamed. So it remembers what the list was
// like after the last insertion, and knows nothing when anything has happened since. It is made
// when it seems worth its price: after as many insertions in a row have looked at all entries in
// vain as cost what it does. It takes up to 64 bytes a name. One thread.
class QVNameIndex {
  public:
    // To make it takes about as long as so many looks at all entries.
    static constexpr int kVainLooks = 8;

    // The name of an entry, and nil for one that is not of the list's kind.
    using NameOf = NS::RefPtr<NS::Object> (*)(const NS::Object& entry);

    explicit QVNameIndex(NameOf nameOf) noexcept : nameOf_(nameOf) {}

    // Begins the insertion of an entry of this name, and tells whether that surely replaces none:
    // no entry has this very object for a name. False also when that is not known, as for nil.
    bool replacesNone(const NS::MutableArray& list, const NS::RefPtr<NS::Object>& name);
    // Says that all entries had to be looked at, and that none gave way.
    void lookedInVain() noexcept { ++vainLooks_; }
    // Ends it: the entry stands in the list.
    void inserted(const NS::MutableArray& list) { revision_ = list.revision(); }

  private:
    // Unfit is a list with an entry of another kind or without a name: those are replaced by other
    // rules, and such a list is looked through each time.
    enum class State : std::uint8_t { kNotRead, kKnown, kUnfit };

    void read(const NS::MutableArray& list);
    void becomes(State state);

    NameOf nameOf_;
    State state_ = State::kNotRead;
    int vainLooks_ = 0; // in a row, but for insertions that replaced an entry
    std::uint64_t revision_ = 0;
    std::uint64_t renamings_ = 0;
    // Also of entries that are gone. Another object may have come to stand at the address of one:
    // it is then taken for a name in use, which costs a look at the entries.
    NS::IdentityMap names_;
};
