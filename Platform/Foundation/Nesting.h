#pragma once

#include <cstdint>

namespace NS {

class Object;

// Guards an operation that goes from a collection into the collections that it holds. A collection
// can hold itself, and one that came from another process can be made to unfold without end; both
// would otherwise end the process by an exhausted stack, or never.
//
// One stands on the stack in each call of such an operation. The constructor raises
// NSGenericException when the thread is in more than Limits::kDepth of them, or when the outermost
// of them has visited more collections than its objects can honestly ask for: a few for each
// reference that they and what they hold have, however often a path leads there.
class NestedVisit {
  public:
    // The collection that is gone into, and the other one, or null, that it is compared with.
    explicit NestedVisit(const Object& object, const Object* other = nullptr);
    ~NestedVisit();
    NestedVisit(const NestedVisit&) = delete;
    NestedVisit& operator=(const NestedVisit&) = delete;
};

// True for arrays, dictionaries and sets. They are equal by what they hold, and so change while
// they are filled; any other object is complete, or is itself whatever it holds.
bool isCollection(const Object& object) noexcept;

// How many references two objects and all collections within them have, each collection counted
// once. Takes no stack; memory in proportion to the number of collections.
std::uint64_t referencesWithin(const Object& object, const Object* other);

} // namespace NS
