#pragma once

#include <cstddef>

namespace NS {

class EqualityBudget;
class Object;

// The hash of an object by what it holds: for arrays, sets, dictionaries, URLs and errors, which
// are equal when their contents are. Any other object gives its own hash().
//
// Equal objects have equal hashes. Those of sets and dictionaries do not depend on the order in
// which these enumerate. The work is bounded whatever the objects hold, also when they hold
// themselves: what is held directly is always looked at, what stands further below within a fixed
// share for each. Two objects that differ only there have one hash.
//
// With a budget, raises before the work comes to more than is left of it.
std::size_t hashOfContents(const Object& object, EqualityBudget* budget = nullptr);

} // namespace NS
