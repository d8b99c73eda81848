#include "Platform/Foundation/EqualityBudget.h"

#include "Platform/Foundation/Array.h"
#include "Platform/Foundation/ContentHash.h"
#include "Platform/Foundation/Data.h"
#include "Platform/Foundation/Dictionary.h"
#include "Platform/Foundation/Error.h"
#include "Platform/Foundation/Exception.h"
#include "Platform/Foundation/Limits.h"
#include "Platform/Foundation/Nesting.h"
#include "Platform/Foundation/Set.h"
#include "Platform/Foundation/String.h"
#include "Platform/Foundation/URL.h"

#include <algorithm>
#include <utility>
#include <vector>

namespace NS {

namespace {

constexpr std::size_t kBytesPerUnit = 64;

[[noreturn]] void raiseTooDear() {
    Exception::raise(kInvalidUnarchiveOperationException,
                     "*** -[NSKeyedUnarchiver decodeObjectForKey:]: telling the keys of a "
                     "dictionary or the members of a set apart takes too much work");
}

const Object& keyOf(const Ref<Object>& member) noexcept {
    return *member;
}
const Object& keyOf(const Dictionary::Entry& entry) noexcept {
    return *entry.first;
}

// How often the one stands there that stands there most often.
std::uint64_t longestRun(std::vector<std::size_t> hashes) {
    std::ranges::sort(hashes);
    std::uint64_t longest = 0;
    for (std::size_t first = 0, i = 0; i < hashes.size(); ++i) {
        first = hashes[i] == hashes[first] ? first : i;
        longest = std::max<std::uint64_t>(longest, i - first + 1);
    }
    return longest;
}

} // namespace

EqualityBudget::EqualityBudget(std::size_t archiveSize) noexcept
    : left_(Limits::kEqualityWorkAtLeast + Limits::kEqualityWorkPerByte * archiveSize) {}

void EqualityBudget::spend(std::uint64_t units) {
    if (units > left_) {
        raiseTooDear();
    }
    left_ -= units;
}

std::uint64_t EqualityBudget::unitsOf(const Object& object) {
    if (const auto* text = as<String>(&object)) {
        return 1 + text->length() / kBytesPerUnit;
    }
    const auto* data = as<Data>(&object);
    return data != nullptr ? 1 + data->length() / kBytesPerUnit : 1;
}

std::size_t EqualityBudget::hashOf(const Object& object) {
    return hashOfContents(object, this);
}

bool EqualityBudget::areEqual(const Object& object, const Object& other) {
    if (&object == &other) {
        spend(1);
        return true;
    }
    (void)costOf(other); // which spends it
    return object.isEqual(&other);
}

// Each member is looked up in the other collection, and compared with all that collide there.
template <class Collection>
std::uint64_t EqualityBudget::costOfMembers(const Collection& collection, std::size_t depth) {
    spend(1);
    std::uint64_t cost = 1;
    for (const auto& member : collection) {
        cost += costOf(keyOf(member), depth + 1);
        if constexpr (std::is_same_v<Collection, Dictionary>) {
            cost += costOf(*member.second, depth + 1);
        }
    }
    if constexpr (std::is_same_v<Collection, Array>) {
        return cost;
    } else {
        return costOfLookUps(cost, collection);
    }
}

// Small collections have no index: there, a member is compared with all. Elsewhere it is compared
// with those of its hash and perhaps its neighbours. Only members that are collections cost much.
template <class Collection>
std::uint64_t EqualityBudget::costOfLookUps(std::uint64_t cost, const Collection& collection) {
    std::vector<std::size_t> hashes;
    for (const auto& member : collection) {
        if (isCollection(keyOf(member))) {
            hashes.push_back(hashOf(keyOf(member)));
        }
    }
    if (hashes.empty()) {
        return cost;
    }
    const std::uint64_t times = collection.count() <= HashIndex::kUnindexedEntries
                                    ? collection.count()
                                    : 2 * longestRun(std::move(hashes));
    if (cost > left_ / times) {
        raiseTooDear();
    }
    return cost * times;
}

std::uint64_t EqualityBudget::costOf(const Object& object, std::size_t depth) {
    if (depth > Limits::kDepth) {
        raiseTooDear();
    }
    if (const auto* array = as<Array>(&object)) {
        return costOfMembers(*array, depth);
    }
    if (const auto* dictionary = as<Dictionary>(&object)) {
        return costOfMembers(*dictionary, depth);
    }
    if (const auto* set = as<Set>(&object)) {
        return costOfMembers(*set, depth);
    }
    if (const auto* error = as<Error>(&object)) {
        return costOf(*error->domain(), depth + 1) + costOf(*error->userInfo(), depth + 1);
    }
    if (const auto* url = as<URL>(&object)) {
        const RefPtr<URL> base = url->baseURL();
        return costOf(*url->relativeString(), depth + 1) + (base ? costOf(*base, depth + 1) : 0);
    }
    const std::uint64_t cost = unitsOf(object);
    spend(cost);
    return cost;
}

} // namespace NS
