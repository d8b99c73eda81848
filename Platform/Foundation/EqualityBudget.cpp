#include "Platform/Foundation/EqualityBudget.h"

#include "Platform/Foundation/Array.h"
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

} // namespace

EqualityBudget::EqualityBudget(std::size_t archiveSize) noexcept
    : left_(Limits::kEqualityWorkAtLeast + Limits::kEqualityWorkPerByte * archiveSize) {}

void EqualityBudget::spend(std::uint64_t units) {
    if (units > left_) {
        raiseTooDear();
    }
    left_ -= units;
}

std::uint64_t EqualityBudget::costOfBytes(std::size_t count) {
    const std::uint64_t cost = 1 + count / kBytesPerUnit;
    spend(cost);
    return cost;
}

// Each member is looked up in the other collection, which may compare it with all that collide.
template <class Collection>
std::uint64_t EqualityBudget::costOfMembers(const Collection& collection, std::size_t depth) {
    spend(1);
    std::uint64_t cost = 1;
    bool membersCollide = false; // the hash of a collection is its count
    for (const auto& member : collection) {
        membersCollide = membersCollide || isCollection(keyOf(member));
        cost += costOf(keyOf(member), depth + 1);
        if constexpr (std::is_same_v<Collection, Dictionary>) {
            cost += costOf(*member.second, depth + 1);
        }
    }
    const bool lookedUp = !std::is_same_v<Collection, Array>;
    return lookedUp && membersCollide ? costOfLookUps(cost, collection.count()) : cost;
}

std::uint64_t EqualityBudget::costOfLookUps(std::uint64_t cost, std::size_t count) {
    if (count != 0 && cost > left_ / count) {
        raiseTooDear();
    }
    return cost * count;
}

std::uint64_t EqualityBudget::costOf(const Object& object, std::size_t depth) {
    if (depth > Limits::kDepth) {
        raiseTooDear();
    }
    if (const auto* text = as<String>(&object)) {
        return costOfBytes(text->length());
    }
    if (const auto* data = as<Data>(&object)) {
        return costOfBytes(data->length());
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
    return costOfBytes(0);
}

} // namespace NS
