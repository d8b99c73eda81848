#include "Platform/Foundation/ContentHash.h"

#include "Platform/Foundation/Array.h"
#include "Platform/Foundation/Dictionary.h"
#include "Platform/Foundation/EqualityBudget.h"
#include "Platform/Foundation/Error.h"
#include "Platform/Foundation/Hashing.h"
#include "Platform/Foundation/Set.h"
#include "Platform/Foundation/String.h"
#include "Platform/Foundation/URL.h"

#include <algorithm>
#include <cstdint>

namespace NS {

namespace {

// How many objects one hash looks at: at least, and for each member that the object itself has.
constexpr std::size_t kShareAtLeast = 256;
constexpr std::size_t kSharePerMember = 8;
// Of an array that has more elements than its share, so many are looked at.
constexpr std::size_t kSampledElements = 8;
// Objects further within one another are told apart by their counts only.
constexpr std::size_t kHashedDepth = 16;

enum class Kind : std::uint64_t { kArray = 1, kSet, kDictionary, kURL, kError };

std::size_t begin(Kind kind, std::size_t count) {
    return hashOfInteger(static_cast<std::uint64_t>(kind) << 56U ^ count);
}

// What one of several comes to, in a hash that depends on their order.
std::size_t add(std::size_t hash, std::size_t next) {
    return hashOfInteger(hash ^ next);
}

// Each member gets the same share, however much the others take: what would be left over for the
// last ones depends on the order.
class ContentHash {
  public:
    explicit ContentHash(EqualityBudget* budget) noexcept : budget_(budget) {}

    std::size_t of(const Object& object, std::size_t share, std::size_t depth) {
        spend(object);
        if (const auto* array = as<Array>(&object)) {
            return ofArray(*array, share, depth);
        }
        if (const auto* dictionary = as<Dictionary>(&object)) {
            return ofDictionary(*dictionary, share, depth);
        }
        if (const auto* set = as<Set>(&object)) {
            return ofSet(*set, share, depth);
        }
        if (const auto* url = as<URL>(&object)) {
            return ofURL(*url, depth);
        }
        if (const auto* error = as<Error>(&object)) {
            return ofError(*error, share, depth);
        }
        return object.hash();
    }

  private:
    void spend(const Object& object) {
        if (budget_ != nullptr) {
            budget_->spend(EqualityBudget::unitsOf(object));
        }
    }

    // What each of these may look at; 0 when that is nothing.
    static std::size_t shareOfEach(std::size_t count, std::size_t share, std::size_t depth) {
        return count == 0 || depth == kHashedDepth ? 0 : (share - 1) / count;
    }

    std::size_t ofArray(const Array& array, std::size_t share, std::size_t depth) {
        const std::size_t count = array.count();
        const std::size_t each = shareOfEach(count, share, depth);
        std::size_t hash = begin(Kind::kArray, count);
        if (each == 0) {
            return depth == kHashedDepth ? hash : addSamples(hash, array, share, depth);
        }
        for (const Ref<Object>& element : array) {
            hash = add(hash, of(*element, each, depth + 1));
        }
        return hash;
    }

    // Some elements from the beginning and some from the end.
    std::size_t addSamples(std::size_t hash, const Array& array, std::size_t share,
                           std::size_t depth) {
        const std::size_t count = array.count();
        const std::size_t samples = std::min({count, share - 1, kSampledElements});
        for (std::size_t i = 0; i < samples; ++i) {
            const std::size_t position = i < samples / 2 ? i : count - samples + i;
            hash = add(hash, of(*array.objectAtIndex(position), 1, depth + 1));
        }
        return hash;
    }

    // Sums do not depend on the order.
    std::size_t ofSet(const Set& set, std::size_t share, std::size_t depth) {
        const std::size_t each = shareOfEach(set.count(), share, depth);
        std::size_t sum = 0;
        if (each != 0) {
            for (const Ref<Object>& member : set) {
                sum += hashOfInteger(of(*member, each, depth + 1));
            }
        }
        return add(begin(Kind::kSet, set.count()), sum);
    }

    std::size_t ofDictionary(const Dictionary& dictionary, std::size_t share, std::size_t depth) {
        const std::size_t each = shareOfEach(2 * dictionary.count(), share, depth);
        std::size_t sum = 0;
        if (each != 0) {
            for (const auto& [key, value] : dictionary) {
                sum += add(hashOfInteger(of(*key, each, depth + 1)), of(*value, each, depth + 1));
            }
        }
        return add(begin(Kind::kDictionary, dictionary.count()), sum);
    }

    std::size_t ofURL(const URL& url, std::size_t depth) {
        const bool isFollowed = url.baseURL() && depth < kHashedDepth;
        const std::size_t base = isFollowed ? of(*url.baseURL(), 1, depth + 1) : 0;
        spend(*url.relativeString());
        return add(begin(Kind::kURL, base), url.relativeString()->hash());
    }

    std::size_t ofError(const Error& error, std::size_t share, std::size_t depth) {
        spend(*error.domain());
        const std::size_t hash = add(begin(Kind::kError, error.domain()->hash()),
                                     static_cast<std::size_t>(error.code()));
        return depth == kHashedDepth ? hash : add(hash, of(*error.userInfo(), share, depth + 1));
    }

    EqualityBudget* budget_;
};

std::size_t membersOf(const Object& object) {
    if (const auto* array = as<Array>(&object)) {
        return array->count();
    }
    if (const auto* dictionary = as<Dictionary>(&object)) {
        return 2 * dictionary->count();
    }
    const auto* set = as<Set>(&object);
    return set != nullptr ? set->count() : 0;
}

} // namespace

std::size_t hashOfContents(const Object& object, EqualityBudget* budget) {
    return ContentHash(budget).of(object, kShareAtLeast + kSharePerMember * membersOf(object), 0);
}

} // namespace NS
