#pragma once

#include "Platform/Foundation/Method.h"
#include "Platform/Foundation/Ref.h"

#include <span>
#include <string_view>

namespace NS {

class Object;
struct Property;

// What the program knows of a class at run time: its name, its superclass, the methods that can be
// called by selector and the properties that key-value coding reaches. One constant per class.
struct Class {
    // The platform's name, as archives record it and descriptions show it ("NSString").
    const char* name;
    const Class* superclass = nullptr;
    std::span<const Method> methods = {};
    std::span<const Property> properties = {};
    // A new object with the class's plain initialiser; null for a class that has none.
    Ref<Object> (*create)() = nullptr;
    // A new object for an archive to be restored into: the root's initialiser only, so that what
    // the class's own initialiser sets is absent. Null for a class that archives do not hold.
    Ref<Object> (*createForCoder)() = nullptr;

    // True for the class itself and everything derived from it.
    bool isSubclassOf(const Class& other) const noexcept {
        for (const Class* c = this; c != nullptr; c = c->superclass) {
            if (c == &other) {
                return true;
            }
        }
        return false;
    }

    // The method of the class or its nearest superclass for a selector's text, or null.
    const Method* methodForSelector(std::string_view selector) const noexcept;

    // The property of the class or its nearest superclass for a key, or null.
    const Property* propertyForKey(std::string_view key) const noexcept;
};

// Makes a class known by its name to classNamed(). One constant beside the class's own definition.
class ClassRegistration {
  public:
    explicit ClassRegistration(const Class& registered) noexcept;
    ClassRegistration(const ClassRegistration&) = delete;
    ClassRegistration& operator=(const ClassRegistration&) = delete;

  private:
    friend const Class* classNamed(std::string_view name) noexcept;
    template <class Visitor>
    friend void forEachClass(Visitor&& visit);

    static const ClassRegistration* first_;
    const Class& class_;
    const ClassRegistration* next_;
};

// The registered class of a name, or null. Any thread, once main() runs.
const Class* classNamed(std::string_view name) noexcept;

// Calls visit(const Class&) for every registered class, in no particular order.
template <class Visitor>
void forEachClass(Visitor&& visit) {
    for (const ClassRegistration* r = ClassRegistration::first_; r != nullptr; r = r->next_) {
        visit(r->class_);
    }
}

} // namespace NS
