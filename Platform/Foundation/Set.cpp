#include "Platform/Foundation/Set.h"

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

void Set::insertWithin(EqualityBudget& budget, Ref<Object> object) {
    const std::uint64_t cost = budget.costOf(*object);
    const std::size_t position = index_.find([&] { return object->hash(); }, objects_.size(),
                                             [&](std::size_t p) {
                                                 budget.spend(cost);
                                                 return objects_[p]->isEqual(object.get());
                                             });
    if (position == HashIndex::kNotFound) {
        objects_.push_back(std::move(object));
        index_.appended(objects_.size(), [this](std::size_t p) { return hashAt(p); });
    }
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
