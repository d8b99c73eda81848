#pragma once

#include "Platform/Foundation/Object.h"

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <utility>
#include <vector>

namespace NS {

class MutableArray;

// Objects in order; the same object may stand in it more than once. Never nil. Does not change
// itself, but may be a MutableArray that its owner changes.
//
// Comparing and key-value coding go into nested collections; they raise NSGenericException for one
// that holds itself, or that nests too deeply.
class Array : public Object {
    NS_OBJECT(Array)
  public:
    Array() = default;
    explicit Array(std::vector<Ref<Object>> objects) : objects_(std::move(objects)) {}
    static Ref<Array> arrayWithObjects(std::initializer_list<Ref<Object>> objects);

    std::size_t count() const noexcept { return objects_.size(); }
    // Raises NSRangeException for an index that is not below the count.
    Ref<Object> objectAtIndex(std::size_t index) const;
    // Nil when the array is empty.
    RefPtr<Object> firstObject() const;
    // True when an element equals the object.
    bool containsObject(const Object& object) const;

    Ref<Array> arrayByAddingObject(const Ref<Object>& object) const;
    Ref<Array> arrayByAddingObjectsFromArray(const Array& other) const;
    // The elements as they are now, unaffected by later changes of this array; an array that never
    // changes gives itself.
    Ref<Array> copy() const;
    Ref<MutableArray> mutableCopy() const;

    auto begin() const noexcept { return objects_.begin(); }
    auto end() const noexcept { return objects_.end(); }

    bool isEqual(const Object* other) const override;
    // By what it holds (ContentHash.h). A collection that changes while it is a key of a dictionary
    // or a member of a set is not found there any more.
    std::size_t hash() const override;
    Ref<String> description() const override;
    // Each element's value for the key, NSNull where it is nil.
    RefPtr<Object> valueForKey(const String& key) const override;
    // Sets the value on each element.
    void setValue_forKey(RefPtr<Object> value, const String& key) override;
    void encodeWithCoder(KeyedArchiver& coder) const override;
    void initWithCoder(KeyedUnarchiver& coder) override;

  protected:
    friend class KeyedUnarchiver;
    std::vector<Ref<Object>> objects_;
};

// An array that can be changed. Not for use by two threads at once while one of them changes it;
// take a copy() before a loop that changes it.
class MutableArray final : public Array {
    NS_OBJECT(MutableArray)
  public:
    using Array::Array;
    // An empty one with room for as many.
    static Ref<MutableArray> arrayWithCapacity(std::size_t capacity);

    // Raises NSInvalidArgumentException for nil.
    void addObject(RefPtr<Object> object);
    // Removes every element that equals the object.
    void removeObject(const Object& object);
    // Removes every occurrence of this very object.
    void removeObjectIdenticalTo(const Object& object);
    // Removes every element that passes test(const Object&), which must not change the array, and
    // returns how many those were. All are tested before any is removed.
    template <class Test>
    std::size_t removeObjectsPassingTest(Test&& test);
    // Raises NSRangeException for an index that is not below the count.
    void removeObjectAtIndex(std::size_t index);
    void removeAllObjects();

    // Tells whether an array has changed: a number that stays the same while nothing is added or
    // removed, and that no array has had before. What its elements do does not count. Not for use
    // by two threads at once.
    std::uint64_t revision() const;

  private:
    // The indexes are in order.
    void removeObjectsAt(const std::vector<std::size_t>& indexes);

    mutable std::uint64_t revision_ = 0; // nobody has asked since the last change
};

template <class Test>
std::size_t MutableArray::removeObjectsPassingTest(Test&& test) {
    std::vector<std::size_t> indexes;
    for (std::size_t i = 0; i < objects_.size(); ++i) {
        if (test(std::as_const(*objects_[i]))) {
            indexes.push_back(i);
        }
    }
    removeObjectsAt(indexes);
    return indexes.size();
}

} // namespace NS
