#pragma once

#include <cstddef>
#include <cstdint>

namespace NS {

class Object;

// Bounds the work of telling objects from outside apart, as keys of a dictionary or members of a
// set. Objects can be made so that each hash or comparison is long (a text of a megabyte that is
// shared by a thousand keys), that all of them collide, or that one comparison unfolds without end
// (arrays that hold another array twice, and so on); what an archive may cost in all is in
// proportion to its size (Limits.h).
class EqualityBudget {
  public:
    explicit EqualityBudget(std::size_t archiveSize) noexcept;

    // The object's hash, paid for.
    std::size_t hashOf(const Object& object);
    // Whether two objects that have the same hash are equal, paid for.
    bool areEqual(const Object& object, const Object& other);
    // What one comparison of the object costs at most, in units; already spent once.
    std::uint64_t costOf(const Object& object) { return costOf(object, 0); }
    // What one look at the object costs that does not go into what it holds.
    static std::uint64_t unitsOf(const Object& object);
    // Raises NSInvalidUnarchiveOperationException when there is not as much left.
    void spend(std::uint64_t units);

  private:
    template <class Collection>
    std::uint64_t costOfMembers(const Collection& collection, std::size_t depth);
    std::uint64_t costOf(const Object& object, std::size_t depth);
    template <class Collection>
    std::uint64_t costOfLookUps(std::uint64_t cost, const Collection& collection);

    std::uint64_t left_;
};

} // namespace NS
