#pragma once

#include <cstddef>
#include <type_traits>
#include <utility>

namespace NS {

// Tells a smart pointer to take over a reference that the caller already holds.
struct AdoptTag {};
inline constexpr AdoptTag kAdopt{};

template <class T>
class Ref;

// A reference to an object, or nil. Keeps the object alive. As safe as a raw pointer across
// threads: two threads may hold two of them to one object, but not write one of them at once.
template <class T>
class RefPtr {
  public:
    constexpr RefPtr() noexcept = default;
    constexpr RefPtr(std::nullptr_t) noexcept {}
    RefPtr(T* object) noexcept : object_(object) { retain(); }
    RefPtr(T* object, AdoptTag) noexcept : object_(object) {}
    RefPtr(const RefPtr& other) noexcept : RefPtr(other.get()) {}
    RefPtr(RefPtr&& other) noexcept : object_(other.leak()) {}

    template <class U>
    requires std::is_convertible_v<U*, T*> RefPtr(const RefPtr<U>& other)
    noexcept : RefPtr(other.get()) {}
    template <class U>
    requires std::is_convertible_v<U*, T*> RefPtr(RefPtr<U>&& other)
    noexcept : object_(other.leak()) {}
    template <class U>
    requires std::is_convertible_v<U*, T*> RefPtr(const Ref<U>& other)
    noexcept : RefPtr(other.get()) {}
    template <class U>
    requires std::is_convertible_v<U*, T*> RefPtr(Ref<U>&& other)
    noexcept : object_(other.leak()) {}

    ~RefPtr() {
        if (object_ != nullptr) {
            object_->release();
        }
    }

    RefPtr& operator=(RefPtr other) noexcept {
        std::swap(object_, other.object_);
        return *this;
    }

    T* get() const noexcept { return object_; }
    T* operator->() const noexcept { return object_; }
    T& operator*() const noexcept { return *object_; }
    explicit operator bool() const noexcept { return object_ != nullptr; }

    // Gives up the reference without releasing it; the caller owns it.
    [[nodiscard]] T* leak() noexcept { return std::exchange(object_, nullptr); }

    // Pointer identity. Equality of contents is the object's own isEqual().
    template <class U>
    friend bool operator==(const RefPtr& a, const RefPtr<U>& b) noexcept {
        return a.get() == b.get();
    }
    friend bool operator==(const RefPtr& a, std::nullptr_t) noexcept { return a.get() == nullptr; }

  private:
    void retain() const noexcept {
        if (object_ != nullptr) {
            object_->retain();
        }
    }

    T* object_ = nullptr;
};

// A reference to an object that is never nil, except for a moved-from one, which can only be
// assigned or destroyed.
template <class T>
class Ref {
  public:
    explicit Ref(T& object) noexcept : object_(&object) { object_->retain(); }
    Ref(T& object, AdoptTag) noexcept : object_(&object) {}
    Ref(const Ref& other) noexcept : Ref(*other.object_) {}
    Ref(Ref&& other) noexcept : object_(other.leak()) {}

    template <class U>
    requires std::is_convertible_v<U*, T*> Ref(const Ref<U>& other)
    noexcept : Ref(*other.get()) {}
    template <class U>
    requires std::is_convertible_v<U*, T*> Ref(Ref<U>&& other)
    noexcept : object_(other.leak()) {}

    ~Ref() {
        if (object_ != nullptr) {
            object_->release();
        }
    }

    Ref& operator=(Ref other) noexcept {
        std::swap(object_, other.object_);
        return *this;
    }

    T* get() const noexcept { return object_; }
    T* operator->() const noexcept { return object_; }
    T& operator*() const noexcept { return *object_; }
    operator T&() const noexcept { return *object_; }

    [[nodiscard]] T* leak() noexcept { return std::exchange(object_, nullptr); }

    template <class U>
    friend bool operator==(const Ref& a, const Ref<U>& b) noexcept {
        return a.get() == b.get();
    }

  private:
    T* object_;
};

template <class T, class U>
bool operator==(const Ref<T>& a, const RefPtr<U>& b) noexcept {
    return a.get() == b.get();
}

// Makes an object of a class with the arguments of its constructor.
template <class T, class... Args>
Ref<T> make(Args&&... args) {
    static_assert(alignof(T) <= alignof(void*)); // as storage of a batch's objects is aligned
    return Ref<T>(*new T(std::forward<Args>(args)...), kAdopt);
}

} // namespace NS
