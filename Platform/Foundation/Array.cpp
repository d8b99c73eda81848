#include "Platform/Foundation/Array.h"

#include "Platform/Foundation/ContentHash.h"
#include "Platform/Foundation/Description.h"
#include "Platform/Foundation/Exception.h"
#include "Platform/Foundation/Format.h"
#include "Platform/Foundation/Nesting.h"
#include "Platform/Foundation/Null.h"

#include <algorithm>
#include <atomic>
#include <utility>

namespace NS {

namespace {

Ref<Object> createArray() {
    return make<Array>();
}

Ref<Object> createMutableArray() {
    return make<MutableArray>();
}

void checkIndex(const Array& array, const char* operation, std::size_t index) {
    if (index < array.count()) {
        return;
    }
    const Ref<String> bounds = array.count() == 0
                                   ? str("for empty array")
                                   : stringWithFormat("bounds [0 .. %zu]", array.count() - 1);
    Exception::raise(kRangeException,
                     stringWithFormat("*** -[%s %s]: index %zu beyond %@", array.objectClass().name,
                                      operation, index, bounds));
}

} // namespace

constinit const Class Array::kClass{
    .name = "NSArray", .superclass = &Object::kClass, .createForCoder = &createArray};
constinit const Class MutableArray::kClass{.name = "NSMutableArray",
                                           .superclass = &Array::kClass,
                                           .create = &createMutableArray,
                                           .createForCoder = &createMutableArray};

Ref<Array> Array::arrayWithObjects(std::initializer_list<Ref<Object>> objects) {
    return make<Array>(std::vector<Ref<Object>>(objects));
}

Ref<Object> Array::objectAtIndex(std::size_t index) const {
    checkIndex(*this, "objectAtIndex:", index);
    return objects_[index];
}

RefPtr<Object> Array::firstObject() const {
    return objects_.empty() ? RefPtr<Object>() : RefPtr<Object>(objects_.front());
}

bool Array::containsObject(const Object& object) const {
    return std::ranges::any_of(objects_, [&](const auto& each) { return each->isEqual(&object); });
}

Ref<Array> Array::arrayByAddingObject(const Ref<Object>& object) const {
    std::vector<Ref<Object>> objects;
    objects.reserve(count() + 1);
    objects.assign(begin(), end());
    objects.push_back(object);
    return make<Array>(std::move(objects));
}

Ref<Array> Array::arrayByAddingObjectsFromArray(const Array& other) const {
    std::vector<Ref<Object>> objects;
    objects.reserve(count() + other.count());
    objects.assign(begin(), end());
    objects.insert(objects.end(), other.begin(), other.end());
    return make<Array>(std::move(objects));
}

Ref<Array> Array::copy() const {
    const bool changes = isKindOfClass(MutableArray::kClass);
    return changes ? make<Array>(objects_) : Ref<Array>(const_cast<Array&>(*this));
}

Ref<MutableArray> Array::mutableCopy() const {
    return make<MutableArray>(objects_);
}

bool Array::isEqual(const Object* other) const {
    if (this == other) {
        return true;
    }
    const auto* array = as<Array>(other);
    const NestedVisit visit(*this, other);
    return array != nullptr &&
           std::ranges::equal(*this, *array, [](const Ref<Object>& a, const Ref<Object>& b) {
               return a == b || a->isEqual(b.get());
           });
}

std::size_t Array::hash() const {
    return hashOfContents(*this);
}

Ref<String> Array::description() const {
    return describe(*this);
}

RefPtr<Object> Array::valueForKey(const String& key) const {
    const NestedVisit visit(*this);
    std::vector<Ref<Object>> values;
    values.reserve(count());
    for (const Ref<Object>& each : *this) {
        const RefPtr<Object> value = each->valueForKey(key);
        values.push_back(value ? Ref<Object>(*value) : Ref<Object>(Null::null()));
    }
    return make<Array>(std::move(values));
}

void Array::setValue_forKey(RefPtr<Object> value, const String& key) {
    const NestedVisit visit(*this);
    for (const Ref<Object>& each : *this) {
        each->setValue_forKey(value, key);
    }
}

Ref<MutableArray> MutableArray::arrayWithCapacity(std::size_t capacity) {
    auto array = make<MutableArray>();
    array->objects_.reserve(capacity);
    return array;
}

void MutableArray::addObject(RefPtr<Object> object) {
    if (!object) {
        Exception::raise(kInvalidArgumentException,
                         "*** -[NSMutableArray addObject:]: object cannot be nil");
    }
    revision_ = 0;
    objects_.emplace_back(*object.leak(), kAdopt);
}

// What is removed is let go of at the end: an object that ends may use the array.
void MutableArray::removeObjectsAt(const std::vector<std::size_t>& indexes) {
    if (indexes.empty()) {
        return;
    }
    revision_ = 0;
    std::vector<Ref<Object>> removed;
    removed.reserve(indexes.size());
    const auto at = [&](std::size_t i) {
        return objects_.begin() + static_cast<std::ptrdiff_t>(i);
    };
    auto end = at(indexes.front());
    for (std::size_t i = 0; i < indexes.size(); ++i) {
        removed.push_back(std::move(*at(indexes[i])));
        const std::size_t next = i + 1 < indexes.size() ? indexes[i + 1] : objects_.size();
        end = std::move(at(indexes[i] + 1), at(next), end);
    }
    objects_.erase(end, objects_.end());
}

void MutableArray::removeObject(const Object& object) {
    removeObjectsPassingTest([&](const Object& each) { return each.isEqual(&object); });
}

void MutableArray::removeObjectIdenticalTo(const Object& object) {
    removeObjectsPassingTest([&](const Object& each) { return &each == &object; });
}

void MutableArray::removeObjectAtIndex(std::size_t index) {
    checkIndex(*this, "removeObjectAtIndex:", index);
    revision_ = 0;
    const Ref<Object> removed = objects_[index];
    objects_.erase(objects_.begin() + static_cast<std::ptrdiff_t>(index));
}

void MutableArray::removeAllObjects() {
    revision_ = 0;
    std::vector<Ref<Object>>().swap(objects_);
}

std::uint64_t MutableArray::revision() const {
    static std::atomic<std::uint64_t> last{0};
    if (revision_ == 0) {
        revision_ = last.fetch_add(1, std::memory_order_relaxed) + 1;
    }
    return revision_;
}

} // namespace NS
