#pragma once

#include "Platform/Foundation/Ref.h"
#include "Platform/Foundation/Selector.h"

#include <array>
#include <cstddef>
#include <span>
#include <string_view>
#include <type_traits>
#include <utility>

namespace NS {

class Object;

// An operation that can be called by its selector, with objects for arguments.
struct Method {
    Selector selector;
    // Calls it on a target of the class that lists it. An argument of another class than the
    // operation declares raises NSInvalidArgumentException, as sending it an unknown message would.
    void (*invoke)(Object& target, std::span<const RefPtr<Object>> arguments);
};

namespace detail {

// Raises unless the object is nil or of the class.
template <class T>
RefPtr<T> argumentOfClass(const RefPtr<Object>& argument);

template <class T>
struct ArgumentClass;
template <class T>
struct ArgumentClass<RefPtr<T>> {
    using Type = T;
};

template <class Function>
struct MemberFunction;
template <class C, class... Args>
struct MemberFunction<void (C::*)(Args...)> {
    static constexpr std::size_t arity = sizeof...(Args);

    template <auto function, std::size_t... I>
    static void call(Object& target, [[maybe_unused]] std::span<const RefPtr<Object>> arguments,
                     std::index_sequence<I...>) {
        (static_cast<C&>(target).*
         function)(argumentOfClass<typename ArgumentClass<std::remove_cvref_t<Args>>::Type>(
            arguments[I])...);
    }
};

} // namespace detail

// The row of a class's method table for one member function, whose parameters are RefPtr<T>. The
// selector's colons must be as many as the parameters; a row where they are not does not compile.
template <auto function>
consteval Method method(const char* selector) {
    using Member = detail::MemberFunction<decltype(function)>;
    const Selector text{selector};
    if (text.argumentCount() != Member::arity) {
        throw "a selector has one colon for each argument";
    }
    return {text, [](Object& target, std::span<const RefPtr<Object>> arguments) {
                Member::template call<function>(target, arguments,
                                                std::make_index_sequence<Member::arity>{});
            }};
}

} // namespace NS
