#pragma once

namespace NS {

// Guards an operation that goes from a collection into the collections that it holds. A collection
// can hold itself, and one that came from another process can be made to unfold without end; both
// would otherwise end the process by an exhausted stack, or never.
//
// One stands on the stack in each call of such an operation. The constructor raises
// NSGenericException when the thread is in more than Limits::kDepth of them, or when the outermost
// of them has visited more than a million collections.
class NestedVisit {
  public:
    NestedVisit();
    ~NestedVisit();
    NestedVisit(const NestedVisit&) = delete;
    NestedVisit& operator=(const NestedVisit&) = delete;
};

} // namespace NS
