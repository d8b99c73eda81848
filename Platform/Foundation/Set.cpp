#include "Platform/Foundation/Set.h"

#include "Platform/Foundation/ContentHash.h"
#include "Platform/Foundation/Description.h"
#include "Platform/Foundation/EqualityBudget.h"
#include "Platform/Foundation/Exception.h"
#include "Platform/Foundation/Nesting.h"

#include <algorithm>

namespace NS {

namespace {

Ref<Object> createSet() {
    return make<Set>();
}

Ref<Object> createMutableSet() {
    return make<MutableSet>();
}

} // namespace

constinit const Class Set::kClass{
    .name = "NSSet", .superclass = &Object::kClass, .createForCoder = &createSet};
constinit const Class MutableSet::kClass{
    .name = "NSMutableSet", .superclass = &Set::kClass, .createForCoder = &createMutableSet};

Set::Set(const std::vector<Ref<Object>>& objects) {
    objects_.reserve(objects.size());
    for (const Ref<Object>& object : objects) {
        insert(object);
    }
}

Set::Set(std::vector<Ref<Object>> objects, EqualityBudget& budget) {
    insertWithin(budget, std::move(objects));
}

Ref<Set> Set::setWithObject(Ref<Object> object) {
    return make<Set>(std::vector<Ref<Object>>{std::move(object)});
}

std::size_t Set::positionOf(const Object& object) const {
    return index_.find([&] { return object.hash(); }, objects_.size(),
                       [&](std::size_t p) { return objects_[p]->isEqual(&object); });
}

void Set::insert(Ref<Object> object) {
    if (containsObject(*object)) {
        return;
    }
    objects_.push_back(std::move(object));
    index_.appended(objects_.size(), [this](std::size_t p) { return hashAt(p); });
}

// Each object is hashed once, and compared only with those of the same hash.
void Set::insertWithin(EqualityBudget& budget, std::vector<Ref<Object>> objects) {
    std::vector<std::size_t> hashes; // by position
    for (Ref<Object>& object : objects) {
        const std::size_t hash = budget.hashOf(*object);
        const auto matches = [&](std::size_t p) {
            return hashes[p] == hash && budget.areEqual(*objects_[p], *object);
        };
        if (index_.find([&] { return hash; }, objects_.size(), matches) == HashIndex::kNotFound) {
            hashes.push_back(hash);
            objects_.push_back(std::move(object));
            index_.appended(objects_.size(), [&](std::size_t p) { return hashes[p]; });
        }
    }
}

void Set::indexAgain(EqualityBudget& budget) {
    index_.rebuild(objects_.size(), [&](std::size_t p) { return budget.hashOf(*objects_[p]); });
}

bool Set::containsObject(const Object& object) const {
    return positionOf(object) != HashIndex::kNotFound;
}

RefPtr<Object> Set::anyObject() const {
    return objects_.empty() ? RefPtr<Object>() : RefPtr<Object>(objects_.front());
}

bool Set::isEqual(const Object* other) const {
    if (this == other) {
        return true;
    }
    const auto* set = as<Set>(other);
    const NestedVisit visit(*this, other);
    return set != nullptr && count() == set->count() &&
           std::ranges::all_of(objects_,
                               [&](const Ref<Object>& each) { return set->containsObject(*each); });
}

std::size_t Set::hash() const {
    return hashOfContents(*this);
}

Ref<String> Set::description() const {
    return describe(*this);
}

void MutableSet::addObject(const RefPtr<Object>& object) {
    if (!object) {
        Exception::raise(kInvalidArgumentException,
                         "*** -[NSMutableSet addObject:]: object cannot be nil");
    }
    insert(Ref<Object>(*object));
}

void MutableSet::removeObject(const Object& object) {
    const std::size_t position = positionOf(object);
    if (position == HashIndex::kNotFound) {
        return;
    }
    const Ref<Object> removed = objects_[position]; // ends after the set is whole again
    objects_.erase(objects_.begin() + static_cast<std::ptrdiff_t>(position));
    index_.rebuild(objects_.size(), [this](std::size_t p) { return hashAt(p); });
}

void MutableSet::removeAllObjects() {
    index_ = HashIndex();
    std::vector<Ref<Object>>().swap(objects_);
}

} // namespace NS
