#pragma once

#include "Platform/Foundation/HashIndex.h"
#include "Platform/Foundation/Object.h"

#include <cstddef>
#include <utility>
#include <vector>

namespace NS {

class EqualityBudget;

// Objects without order, no two of them equal. Enumerates in the order in which they came. A
// member that is a collection must not change meanwhile: it would not be found any more.
class Set : public Object {
    NS_OBJECT(Set)
  public:
    Set() = default;
    explicit Set(const std::vector<Ref<Object>>& objects);
    // The same for objects from outside: raises when telling them apart takes more than the budget.
    Set(std::vector<Ref<Object>> objects, EqualityBudget& budget);
    static Ref<Set> setWithObject(Ref<Object> object);

    std::size_t count() const noexcept { return objects_.size(); }
    bool containsObject(const Object& object) const;
    // One of the objects, or nil when there is none.
    RefPtr<Object> anyObject() const;

    auto begin() const noexcept { return objects_.begin(); }
    auto end() const noexcept { return objects_.end(); }

    bool isEqual(const Object* other) const override;
    // By what it holds, as Array's.
    std::size_t hash() const override;
    Ref<String> description() const override;
    void encodeWithCoder(KeyedArchiver& coder) const override;
    void initWithCoder(KeyedUnarchiver& coder) override;

  protected:
    friend class KeyedUnarchiver;
    std::size_t positionOf(const Object& object) const;
    void insert(Ref<Object> object);
    void insertWithin(EqualityBudget& budget, std::vector<Ref<Object>> objects);
    // Finds the members by what they hold now.
    void indexAgain(EqualityBudget& budget);
    std::size_t hashAt(std::size_t position) const { return objects_[position]->hash(); }

    std::vector<Ref<Object>> objects_;
    HashIndex index_;
};

// A set that can be changed. Not for use by two threads at once while one of them changes it.
class MutableSet final : public Set {
    NS_OBJECT(MutableSet)
  public:
    using Set::Set;

    // Does nothing for an object that the set has. Raises NSInvalidArgumentException for nil.
    void addObject(const RefPtr<Object>& object);
    // Linear in the number of objects.
    void removeObject(const Object& object);
    void removeAllObjects();
};

} // namespace NS
