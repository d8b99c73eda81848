#pragma once

#include "Platform/Foundation/Class.h"
#include "Platform/Foundation/Ref.h"

#include <atomic>
#include <cstddef>
#include <cstdint>

namespace NS {

class KeyedArchiver;
class KeyedUnarchiver;
class String;

// Gives a class its run-time description, kClass, which the source file defines.
#define NS_OBJECT(Self)                                                                            \
  public:                                                                                          \
    static const NS::Class kClass;                                                                 \
    const NS::Class& objectClass() const noexcept override {                                       \
        return kClass;                                                                             \
    }                                                                                              \
    using Self_ = Self;                                                                            \
    [[maybe_unused]] static constexpr int kFirstPropertyLine = __LINE__;                           \
                                                                                                   \
  private:

// The root of every class whose objects have an identity: counted references, equality,
// description, key-value coding and archiving. Counting is safe from any thread; everything else as
// the class says.
class Object {
  public:
    static const Class kClass;

    Object() noexcept = default;
    Object(const Object&) = delete;
    Object& operator=(const Object&) = delete;

    void retain() const noexcept { references_.fetch_add(1, std::memory_order_relaxed); }
    // The holder of the only reference is alone with the object, and spares the exchange with other
    // processors.
    void release() const noexcept {
        if (references_.load(std::memory_order_acquire) == 1 ||
            references_.fetch_sub(1, std::memory_order_acq_rel) == 1) {
            delete this;
        }
    }
    // How many references there are now; one is its holder's alone.
    std::uint32_t referenceCount() const noexcept {
        return references_.load(std::memory_order_relaxed);
    }

    virtual const Class& objectClass() const noexcept { return kClass; }
    bool isKindOfClass(const Class& other) const noexcept {
        return objectClass().isSubclassOf(other);
    }
    // The method for a selector of the object's own class, or null where it does not respond.
    const Method* methodForSelector(Selector selector) const noexcept {
        return objectClass().methodForSelector(selector.name);
    }

    // Equality as collections see it. The root compares identity. Equal objects have equal hashes.
    virtual bool isEqual(const Object* other) const { return this == other; }
    virtual std::size_t hash() const;
    // Equality as the objects themselves define it; the root falls back to isEqual().
    virtual bool isEqualTo(const Object* other) const { return isEqual(other); }

    // What "%@" inserts: "<Class: 0x…>" for the root.
    virtual Ref<String> description() const;

    // Reads a property by its key; scalars come boxed. The keys of an object are those of the
    // properties that its class and its superclasses declare: no other method is one, whatever it
    // returns. A key that the class does not have raises NSUnknownKeyException.
    virtual RefPtr<Object> valueForKey(const String& key) const;
    // The same along a dotted path; nil on the way gives nil.
    virtual RefPtr<Object> valueForKeyPath(const String& path) const;
    // Stores a property by its key. An unknown key raises NSUnknownKeyException, nil for a scalar
    // property NSInvalidArgumentException.
    virtual void setValue_forKey(RefPtr<Object> value, const String& key);
    virtual void setValue_forKeyPath(RefPtr<Object> value, const String& path);

    // Writes the object into an archive, or reads it into a fresh object of its class. A class that
    // archives do not hold raises NSInvalidArgumentException.
    virtual void encodeWithCoder(KeyedArchiver& coder) const;
    virtual void initWithCoder(KeyedUnarchiver& coder);

    // Storage in the thread's ObjectBatch, where there is one. A class whose objects have
    // characters or bytes behind them asks for more than its own size.
    static void* operator new(std::size_t size);
    static void operator delete(void* storage, std::size_t size) noexcept;

  protected:
    virtual ~Object() = default;

  private:
    mutable std::atomic<std::uint32_t> references_{1};
};

// The object as a T when it is of that class, else nil.
template <class T>
RefPtr<T> as(const RefPtr<Object>& object) noexcept {
    if (object && object->isKindOfClass(T::kClass)) {
        return RefPtr<T>(static_cast<T*>(object.get()));
    }
    return nullptr;
}
template <class T>
const T* as(const Object* object) noexcept {
    return object != nullptr && object->isKindOfClass(T::kClass) ? static_cast<const T*>(object)
                                                                 : nullptr;
}

// Raises NSInvalidArgumentException for an object that is sent what it does not respond to.
[[noreturn]] void raiseUnrecognizedSelector(const Object& receiver, Selector selector);
// Raises NSInvalidArgumentException for an object that is used as one of a class that it is not of.
[[noreturn]] void raiseUnrecognizedSelector(const Object& receiver, const Class& expected);

// The object as a T; nil stays nil; another class raises NSInvalidArgumentException.
template <class T>
RefPtr<T> cast(const RefPtr<Object>& object) {
    if (object && !object->isKindOfClass(T::kClass)) {
        raiseUnrecognizedSelector(*object, T::kClass);
    }
    return RefPtr<T>(static_cast<T*>(object.get()));
}

template <class T>
RefPtr<T> detail::argumentOfClass(const RefPtr<Object>& argument) {
    return cast<T>(argument);
}

} // namespace NS
