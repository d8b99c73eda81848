#include "Platform/Foundation/Number.h"

#include "Platform/Foundation/Exception.h"
#include "Platform/Foundation/Format.h"
#include "Platform/Foundation/Hashing.h"
#include "Platform/Foundation/String.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <limits>

namespace NS {

constinit const Class Number::kClass{.name = "NSNumber", .superclass = &Object::kClass};

namespace {

// The nearest value of an integer type. The limits are compared as powers of two, which a double
// holds exactly, unlike the greatest integer itself.
template <class Integer>
Integer truncated(double value) noexcept {
    constexpr double kBeyond =
        static_cast<double>(Integer{1} << (std::numeric_limits<Integer>::digits - 1)) * 2.0;
    constexpr double kLowest = std::numeric_limits<Integer>::is_signed ? -kBeyond : 0.0;
    if (std::isnan(value)) {
        return 0;
    }
    if (value >= kBeyond) {
        return std::numeric_limits<Integer>::max();
    }
    return value <= kLowest ? std::numeric_limits<Integer>::min() : static_cast<Integer>(value);
}

template <class T>
int ordered(T a, T b) noexcept {
    return a == b ? 0 : (a < b ? -1 : 1);
}

int orderedReals(double a, double b) noexcept {
    if (std::isnan(a) || std::isnan(b)) {
        return ordered(std::isnan(b), std::isnan(a));
    }
    return ordered(a, b);
}

// An integer of either signedness: its value is that of `bits` as two's complement, unless it is
// beyond the signed range.
struct WideInteger {
    std::uint64_t bits;
    bool beyondSigned;

    std::int64_t signedValue() const noexcept { return static_cast<std::int64_t>(bits); }
};

int orderedIntegers(WideInteger a, WideInteger b) noexcept {
    if (a.beyondSigned != b.beyondSigned) {
        return a.beyondSigned ? 1 : -1;
    }
    return a.beyondSigned ? ordered(a.bits, b.bits) : ordered(a.signedValue(), b.signedValue());
}

// Every integer from -2^63 up to, not including, 2^64.
bool hasIntegerPart(double value) noexcept {
    return value >= -0x1p63 && value < 0x1p64;
}

WideInteger integerPart(double value) noexcept {
    return value < 0x1p63
               ? WideInteger{static_cast<std::uint64_t>(static_cast<std::int64_t>(value)), false}
               : WideInteger{static_cast<std::uint64_t>(value), true};
}

// Compares exactly: as two doubles, neighbours above 2^53 would be equal to a third and not to each
// other.
int orderedMixed(WideInteger integer, double real) noexcept {
    if (std::isnan(real) || real < -0x1p63) {
        return 1;
    }
    if (real >= 0x1p64) {
        return -1;
    }
    const int order = orderedIntegers(integer, integerPart(real));
    return order != 0 ? order : ordered(0.0, real - std::trunc(real));
}

} // namespace

Ref<Number> Number::numberWithBool(bool value) {
    return make<Number>(Type::kBoolean, value ? 1U : 0U);
}

Ref<Number> Number::numberWithLongLong(std::int64_t value) {
    return make<Number>(Type::kInteger, static_cast<std::uint64_t>(value));
}

Ref<Number> Number::numberWithUnsignedLongLong(std::uint64_t value) {
    return make<Number>(Type::kUnsigned, value);
}

Ref<Number> Number::numberWithFloat(float value) {
    return make<Number>(Type::kFloat, std::bit_cast<std::uint64_t>(static_cast<double>(value)));
}

Ref<Number> Number::numberWithDouble(double value) {
    return make<Number>(Type::kDouble, std::bit_cast<std::uint64_t>(value));
}

std::int64_t Number::longLongValue() const noexcept {
    if (isReal()) {
        return truncated<std::int64_t>(doubleValue());
    }
    return isBeyondSigned() ? std::numeric_limits<std::int64_t>::max()
                            : static_cast<std::int64_t>(bits_);
}

std::uint64_t Number::unsignedLongLongValue() const noexcept {
    return isReal() ? truncated<std::uint64_t>(doubleValue()) : bits_;
}

std::int32_t Number::intValue() const noexcept {
    using Limits = std::numeric_limits<std::int32_t>;
    return static_cast<std::int32_t>(
        std::clamp<std::int64_t>(longLongValue(), Limits::min(), Limits::max()));
}

double Number::doubleValue() const noexcept {
    if (isReal()) {
        return std::bit_cast<double>(bits_);
    }
    return type_ == Type::kUnsigned ? static_cast<double>(bits_)
                                    : static_cast<double>(static_cast<std::int64_t>(bits_));
}

bool Number::boolValue() const noexcept {
    return isReal() ? doubleValue() != 0.0 : bits_ != 0;
}

int Number::compare(const Number& other) const noexcept {
    const auto integerOf = [](const Number& number) {
        return WideInteger{number.bits_, number.isBeyondSigned()};
    };
    if (isReal() && other.isReal()) {
        return orderedReals(doubleValue(), other.doubleValue());
    }
    if (isReal()) {
        return -orderedMixed(integerOf(other), doubleValue());
    }
    return other.isReal() ? orderedMixed(integerOf(*this), other.doubleValue())
                          : orderedIntegers(integerOf(*this), integerOf(other));
}

bool Number::isEqual(const Object* other) const {
    const auto* number = as<Number>(other);
    return number != nullptr && isEqualToNumber(*number);
}

std::size_t Number::hash() const {
    if (!isReal()) {
        return hashOfInteger(bits_);
    }
    const double value = doubleValue();
    const bool integral = hasIntegerPart(value) && std::trunc(value) == value;
    return integral ? hashOfInteger(integerPart(value).bits) : hashOfReal(value);
}

Ref<String> Number::description() const {
    switch (type_) {
    case Type::kUnsigned:
        return stringWithFormat("%llu", bits_);
    case Type::kFloat:
        return stringWithFormat("%0.7g", doubleValue());
    case Type::kDouble:
        return stringWithFormat("%0.16g", doubleValue());
    default:
        return stringWithFormat("%lld", longLongValue());
    }
}

namespace {

template <class Result>
Result readNumber(const RefPtr<Object>& value, Result (Number::*fromNumber)() const,
                  Result (String::*fromText)() const) {
    if (!value) {
        return {};
    }
    if (const auto text = as<String>(value)) {
        return ((*text).*fromText)();
    }
    return ((*cast<Number>(value)).*fromNumber)();
}

} // namespace

std::int64_t longLongValue(const RefPtr<Object>& value) {
    return readNumber<std::int64_t>(value, &Number::longLongValue, &String::longLongValue);
}

std::int32_t intValue(const RefPtr<Object>& value) {
    return readNumber<std::int32_t>(value, &Number::intValue, &String::intValue);
}

double doubleValue(const RefPtr<Object>& value) {
    return readNumber<double>(value, &Number::doubleValue, &String::doubleValue);
}

bool boolValue(const RefPtr<Object>& value) {
    return readNumber<bool>(value, &Number::boolValue, &String::boolValue);
}

} // namespace NS
