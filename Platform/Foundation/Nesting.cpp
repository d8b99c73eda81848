#include "Platform/Foundation/Nesting.h"

#include "Platform/Foundation/Array.h"
#include "Platform/Foundation/Dictionary.h"
#include "Platform/Foundation/Exception.h"
#include "Platform/Foundation/IdentityMap.h"
#include "Platform/Foundation/Limits.h"
#include "Platform/Foundation/Set.h"

#include <algorithm>
#include <cstddef>
#include <vector>

namespace NS {

namespace {

// What a thread's outermost operation has come to.
struct Progress {
    std::size_t depth = 0;
    std::uint64_t visits = 0;
    std::uint64_t limit = 0;
    bool isCounted = false; // whether the limit is that of the objects
    const Object* object = nullptr;
    const Object* other = nullptr;
};

constinit thread_local Progress progress;

// Walks collections, each once, and counts what they refer to.
class ReferenceCount {
  public:
    void add(const Object* object) {
        if (object != nullptr && isCollection(*object) && seen_.numberOf(object) == 0) {
            seen_.numberOf(object) = 1;
            waiting_.push_back(object);
        }
    }

    std::uint64_t count() {
        std::uint64_t references = 0;
        while (!waiting_.empty()) {
            const Object* const next = waiting_.back();
            waiting_.pop_back();
            references += addMembersOf(next);
        }
        return references;
    }

  private:
    std::uint64_t addMembersOf(const Object* collection) {
        if (const auto* const array = as<Array>(collection)) {
            return addAll(*array);
        }
        if (const auto* const set = as<Set>(collection)) {
            return addAll(*set);
        }
        const auto& dictionary = static_cast<const Dictionary&>(*collection);
        for (const auto& [key, value] : dictionary) {
            add(key.get());
            add(value.get());
        }
        return 2 * dictionary.count();
    }

    template <class Collection>
    std::uint64_t addAll(const Collection& collection) {
        for (const Ref<Object>& each : collection) {
            add(each.get());
        }
        return collection.count();
    }

    IdentityMap seen_;
    std::vector<const Object*> waiting_;
};

// Whether the objects of the outermost operation account for as many visits. They are counted only
// when the number that is allowed to any is used up.
bool mayGoOn() {
    if (progress.visits < progress.limit) {
        return true;
    }
    if (!progress.isCounted) {
        progress.isCounted = true;
        progress.limit = std::max(Limits::kVisitsAtLeast,
                                  Limits::kVisitsPerReference *
                                      referencesWithin(*progress.object, progress.other));
    }
    return progress.visits < progress.limit;
}

} // namespace

bool isCollection(const Object& object) noexcept {
    return object.isKindOfClass(Array::kClass) || object.isKindOfClass(Dictionary::kClass) ||
           object.isKindOfClass(Set::kClass);
}

std::uint64_t referencesWithin(const Object& object, const Object* other) {
    ReferenceCount references;
    references.add(&object);
    references.add(other);
    return references.count();
}

NestedVisit::NestedVisit(const Object& object, const Object* other) {
    if (progress.depth == 0) {
        progress = {.limit = Limits::kVisitsAtLeast, .object = &object, .other = other};
    }
    if (progress.depth >= Limits::kDepth || !mayGoOn()) {
        Exception::raise(kGenericException,
                         "a collection holds itself, or holds the same ones too often");
    }
    ++progress.depth;
    ++progress.visits;
}

NestedVisit::~NestedVisit() {
    --progress.depth;
}

} // namespace NS
