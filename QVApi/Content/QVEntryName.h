#pragma once

#include "Platform/Foundation/Property.h"

#include <cstdint>
#include <utility>
#include <vector>

// Where a file or folder keeps its name. Any thread.
//
// Counts the renamings of the whole process, so that a listing can tell whether what it remembers
// of its entries' names still holds, without an entry knowing the listings that it is in.
class QVEntryName {
  public:
    // Lets the names of many entries be looked at without a reference to each, which would cost
    // more than the look. Every name that any entry has while it exists is there until it ends,
    // also one that another thread replaces meanwhile; the entries are the caller's to keep.
    class Reading {
      public:
        Reading() noexcept;
        ~Reading();
        Reading(const Reading&) = delete;
        Reading& operator=(const Reading&) = delete;

        // The name, or null.
        const NS::Object* of(const QVEntryName& name) const noexcept { return name.name_.peek(); }

      private:
        friend class QVEntryName;
        Reading* next_;
        std::vector<NS::Ref<NS::Object>> replaced_; // since it began
    };

    // How many names have been replaced by another object, or by nothing, in any file or folder so
    // far. A first name does not count: giving one is part of making an entry.
    static std::uint64_t renamings() noexcept;

    NS::RefPtr<NS::Object> load() const noexcept { return name_.load(); }
    void store(NS::RefPtr<NS::Object> name) noexcept;
    // The same for an entry that no other thread knows of yet.
    void storeUnshared(NS::RefPtr<NS::Object> name) noexcept;
    // Whether it is this very object, which the caller holds; null is no name.
    bool is(const NS::Object* name) const noexcept { return name_.peek() == name; }
    // Where it stands, for key-value coding.
    const NS::AtomicRef<NS::Object>& reference() const noexcept { return name_; }

  private:
    static void noteReplaced(const NS::RefPtr<NS::Object>& before, const NS::Object* now) noexcept;
    static void keepForReadings(const NS::Ref<NS::Object>& replaced);

    NS::AtomicRef<NS::Object> name_;
};
