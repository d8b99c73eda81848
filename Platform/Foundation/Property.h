#pragma once

#include "Platform/Foundation/Number.h"
#include "Platform/Foundation/Object.h"

#include <array>
#include <atomic>
#include <cstdint>
#include <string_view>
#include <thread>
#include <utility>

// Properties of classes.
//
// A record class declares each property once, in its class body:
//
//     class QVUserInfoItem final : public QVContentItem {
//         NS_OBJECT(QVUserInfoItem)
//       public:
//         NS_RECORD_PROPERTY(NS::Number, storageUsed, setStorageUsed)
//
// and hands propertiesOf<QVUserInfoItem>() to its kClass. The accessors, key-value coding and,
// through it, mapping and archiving all come from that line.

namespace NS {

// A strong reference that can be read and replaced from several threads. As small as a pointer: the
// lowest bit, free in every object's address, is the lock.
template <class T>
class AtomicRef {
  public:
    AtomicRef() = default;
    ~AtomicRef() { storeUnshared(nullptr); }
    AtomicRef(const AtomicRef&) = delete;
    AtomicRef& operator=(const AtomicRef&) = delete;

    // What it refers to now; stays valid after a concurrent store().
    RefPtr<T> load() const noexcept {
        const std::uintptr_t bits = lock();
        RefPtr<T> object(pointer(bits));
        bits_.store(bits, std::memory_order_release);
        return object;
    }

    // The same without a reference to it: for comparing it with an object that the caller holds, or
    // where whoever replaces it keeps it.
    const T* peek() const noexcept {
        return pointer(bits_.load(std::memory_order_acquire) & ~kLocked);
    }

    void store(RefPtr<T> object) noexcept { (void)exchange(std::move(object)); }

    // Stores an object and gives the one it took the place of. That is let go of outside of the
    // lock: it may run a destructor.
    RefPtr<T> exchange(RefPtr<T> object) noexcept {
        const std::uintptr_t old = lock();
        bits_.store(reinterpret_cast<std::uintptr_t>(object.leak()), std::memory_order_release);
        return RefPtr<T>(pointer(old), kAdopt);
    }

    // The same for a record that is being made or that ends, so that no other thread knows of it:
    // without the lock, which costs more than all the rest.
    RefPtr<T> exchangeUnshared(RefPtr<T> object) noexcept {
        const std::uintptr_t old = bits_.load(std::memory_order_relaxed);
        bits_.store(reinterpret_cast<std::uintptr_t>(object.leak()), std::memory_order_relaxed);
        return RefPtr<T>(pointer(old), kAdopt);
    }
    void storeUnshared(RefPtr<T> object) noexcept { (void)exchangeUnshared(std::move(object)); }

    // Where a property that has this as its storage keeps its value.
    const AtomicRef& reference() const noexcept { return *this; }

    // Calls look(const T*) with what it refers to, or null, which is not let go of before look()
    // returns. For what takes no longer than to write a text down: other threads wait meanwhile.
    template <class Look>
    void whileHeld(Look&& look) const {
        const Held held(*this);
        look(static_cast<const T*>(held.object()));
    }

  private:
    static constexpr std::uintptr_t kLocked = 1;

    // The lock, until the end of the block.
    class Held {
      public:
        explicit Held(const AtomicRef& reference) noexcept
            : reference_(reference), bits_(reference.lock()) {}
        ~Held() { reference_.bits_.store(bits_, std::memory_order_release); }
        Held(const Held&) = delete;
        Held& operator=(const Held&) = delete;

        T* object() const noexcept { return pointer(bits_); }

      private:
        const AtomicRef& reference_;
        std::uintptr_t bits_;
    };

    static T* pointer(std::uintptr_t bits) noexcept { return reinterpret_cast<T*>(bits); }

    // Takes the lock and returns the bits without it. Held for a few instructions only.
    std::uintptr_t lock() const noexcept {
        for (;;) {
            const std::uintptr_t bits = bits_.fetch_or(kLocked, std::memory_order_acquire);
            if ((bits & kLocked) == 0) {
                return bits;
            }
            std::this_thread::yield();
        }
    }

    mutable std::atomic<std::uintptr_t> bits_{0};
};

// One property as key-value coding sees it.
struct Property {
    std::string_view key;
    RefPtr<Object> (*get)(const Object& object);
    void (*set)(Object& object, RefPtr<Object> value);
    // The same for an object that no other thread knows of yet: AtomicRef::storeUnshared().
    void (*setUnshared)(Object& object, RefPtr<Object> value);
    // Where the object's value stands, for who looks at it without a reference to it:
    // AtomicRef::whileHeld(). Null for a scalar.
    const AtomicRef<Object>& (*reference)(const Object& object);
    bool isScalar;
};

// The line of a class's declaration that a property stands on, as a type.
template <class C, int line>
struct PropertyLine {};

// How far below its NS_OBJECT a class's properties may stand, in lines.
inline constexpr int kPropertyLines = 100;

template <class C, int line>
inline constexpr bool kHasPropertyAt = requires {
    C::propertyAt(PropertyLine<C, line>{});
};

// The properties that a class itself declares, in order.
template <class C>
consteval auto propertiesOf() {
    return []<int... offset>(std::integer_sequence<int, offset...>) {
        constexpr int kFirst = C::kFirstPropertyLine;
        constexpr std::size_t kCount =
            (std::size_t{0} + ... + (kHasPropertyAt<C, kFirst + offset> ? 1U : 0U));
        std::array<Property, kCount> properties{};
        std::size_t next = 0;
        (
            [&] {
                if constexpr (kHasPropertyAt<C, kFirst + offset>) {
                    properties[next++] = C::propertyAt(PropertyLine<C, kFirst + offset>{});
                }
            }(),
            ...);
        return properties;
    }
    (std::make_integer_sequence<int, kPropertyLines>{});
}

// Raises NSInvalidArgumentException: nil cannot be stored in a scalar property.
[[noreturn]] void raiseNilForScalar(const Object& object, std::string_view key);

// A scalar of a record, boxed for key-value coding.
template <class T>
struct Scalar;
template <>
struct Scalar<bool> {
    static Ref<Object> box(bool value) { return Number::numberWithBool(value); }
    static bool unbox(const RefPtr<Object>& value) { return boolValue(value); }
};
template <>
struct Scalar<double> {
    static Ref<Object> box(double value) { return Number::numberWithDouble(value); }
    static double unbox(const RefPtr<Object>& value) { return doubleValue(value); }
};

// The scalar that a boxed value stands for.
template <class T>
T unboxedScalar(const Object& object, std::string_view key, const RefPtr<Object>& value) {
    if (!value) {
        raiseNilForScalar(object, key);
    }
    return Scalar<T>::unbox(value);
}

} // namespace NS

#define NS_PROPERTY_SETTER(expression)                                                             \
    [](NS::Object& object, NS::RefPtr<NS::Object> value) {                                         \
        auto& self = static_cast<Self_&>(object);                                                  \
        expression;                                                                                \
    }

#define NS_PROPERTY_ENTRY(name, scalar, getExpression, setExpression, setUnsharedExpression,       \
                          referenceFunction)                                                       \
    static constexpr NS::Property propertyAt(NS::PropertyLine<Self_, __LINE__>) {                  \
        static_assert(__LINE__ - kFirstPropertyLine < NS::kPropertyLines,                          \
                      "a property stands too far below its class's NS_OBJECT");                    \
        return {#name,                                                                             \
                [](const NS::Object& object) -> NS::RefPtr<NS::Object> {                           \
                    const auto& self = static_cast<const Self_&>(object);                          \
                    return getExpression;                                                          \
                },                                                                                 \
                NS_PROPERTY_SETTER(setExpression),                                                 \
                NS_PROPERTY_SETTER(setUnsharedExpression),                                         \
                referenceFunction,                                                                 \
                scalar};                                                                           \
    }

// A strong, atomic property of a record. The type is what its owner expects to find there; a reply
// or an archive may have put another object in, so that it is read as it stands.
#define NS_RECORD_PROPERTY(Type, name, setName)                                                    \
    NS_RECORD_PROPERTY_IN(NS::AtomicRef<NS::Object>, Type, name, setName)

// The same in a storage of the record's own, which has what AtomicRef has.
#define NS_RECORD_PROPERTY_IN(Storage, Type, name, setName)                                        \
  public:                                                                                          \
    NS::RefPtr<NS::Object> name() const {                                                          \
        return name##_.load();                                                                     \
    }                                                                                              \
    void setName(NS::RefPtr<Type> value) {                                                         \
        name##_.store(std::move(value));                                                           \
    }                                                                                              \
    NS_PROPERTY_ENTRY(name, false, self.name##_.load(), self.name##_.store(std::move(value)),      \
                      self.name##_.storeUnshared(std::move(value)),                                \
                      [](const NS::Object& object) -> const NS::AtomicRef<NS::Object>& {           \
                          return static_cast<const Self_&>(object).name##_.reference();            \
                      })                                                                           \
                                                                                                   \
  private:                                                                                         \
    Storage name##_;                                                                               \
                                                                                                   \
  public:

// An atomic scalar property (bool or double) of a record; key-value coding boxes it into a number.
#define NS_RECORD_SCALAR(Type, name, setName)                                                      \
  public:                                                                                          \
    Type name() const {                                                                            \
        return name##_.load(std::memory_order_acquire);                                            \
    }                                                                                              \
    void setName(Type value) {                                                                     \
        name##_.store(value, std::memory_order_release);                                           \
    }                                                                                              \
    NS_PROPERTY_ENTRY(name, true, NS::Scalar<Type>::box(self.name()),                              \
                      self.setName(NS::unboxedScalar<Type>(object, #name, value)),                 \
                      self.setName(NS::unboxedScalar<Type>(object, #name, value)), nullptr)        \
                                                                                                   \
  private:                                                                                         \
    std::atomic<Type> name##_{};                                                                   \
                                                                                                   \
  public:

// A strong, atomic property of any other class: accessors of the exact type, no key-value coding.
#define NS_PROPERTY(Type, name, setName)                                                           \
  public:                                                                                          \
    NS::RefPtr<Type> name() const {                                                                \
        return name##_.load();                                                                     \
    }                                                                                              \
    void setName(NS::RefPtr<Type> value) {                                                         \
        name##_.store(std::move(value));                                                           \
    }                                                                                              \
                                                                                                   \
  private:                                                                                         \
    NS::AtomicRef<Type> name##_;                                                                   \
                                                                                                   \
  public:
