#pragma once

#include "Platform/Foundation/Object.h"
#include "Platform/Foundation/String.h"
#include "Platform/Foundation/StringBuilder.h"

#include <array>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>
#include <type_traits>

namespace NS {

// One argument of a format, with its kind. Borrows the object or text for the call it is passed to.
class FormatArgument {
  public:
    enum class Kind : std::uint8_t { kSigned, kUnsigned, kReal, kText, kPointer, kObject };

    template <std::signed_integral T>
    FormatArgument(T value) noexcept : kind_(Kind::kSigned), signed_(value) {}
    template <std::unsigned_integral T>
    FormatArgument(T value) noexcept : kind_(Kind::kUnsigned), unsigned_(value) {}
    template <std::floating_point T>
    FormatArgument(T value) noexcept : kind_(Kind::kReal), real_(static_cast<double>(value)) {}
    FormatArgument(const char* text) noexcept : kind_(Kind::kText), text_(text) {}
    FormatArgument(const void* pointer) noexcept : kind_(Kind::kPointer), pointer_(pointer) {}
    FormatArgument(std::nullptr_t) noexcept : kind_(Kind::kObject), object_(nullptr) {}
    FormatArgument(const Object* object) noexcept : kind_(Kind::kObject), object_(object) {}
    template <class T>
    FormatArgument(const Ref<T>& object) noexcept : FormatArgument(asObject(object.get())) {}
    template <class T>
    FormatArgument(const RefPtr<T>& object) noexcept : FormatArgument(asObject(object.get())) {}

    Kind kind() const noexcept { return kind_; }
    std::int64_t signedValue() const noexcept { return signed_; }
    std::uint64_t unsignedValue() const noexcept { return unsigned_; }
    double realValue() const noexcept { return real_; }
    const char* text() const noexcept { return text_; }
    const void* pointer() const noexcept { return pointer_; }
    const Object* object() const noexcept { return object_; }

  private:
    static const Object* asObject(const Object* object) noexcept { return object; }

    Kind kind_;
    union {
        std::int64_t signed_;
        std::uint64_t unsigned_;
        double real_;
        const char* text_;
        const void* pointer_;
        const Object* object_;
    };
};

// printf's formats without the user's locale, and "%@" for an object's description; nil, and a null
// text for "%s", give "(null)". Understands flags, width, precision, "*", positions ("%2$@"), the
// length modifiers hh h l ll q j z t, and the conversions d i u x X o c C s @ p f F e E g G a A %.
// An integer is cut to the width that its length modifier names, as a C argument would be. Widths
// and the precision of "%@" count UTF-16 units, the precision of "%s" bytes. Arguments that the
// format does not ask for are left out.
//
// A format that is wrong, or that asks for an argument of another kind or for more than there are,
// raises NSInvalidArgumentException.
Ref<String> stringWithFormatArguments(std::string_view format,
                                      std::span<const FormatArgument> arguments);

// The same, appended to a text that is being put together. What was appended before a raise stays.
void appendFormatWithArguments(StringBuilder& out, std::string_view format,
                               std::span<const FormatArgument> arguments);

template <class... Args>
Ref<String> stringWithFormat(std::string_view format, const Args&... arguments) {
    const std::array<FormatArgument, sizeof...(Args)> list{FormatArgument(arguments)...};
    return stringWithFormatArguments(format, list);
}

} // namespace NS
