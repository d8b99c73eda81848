#include "Platform/Foundation/Number.h"

#include "Platform/Foundation/Exception.h"
#include "Platform/Foundation/Format.h"
#include "Platform/Foundation/String.h"

#include <bit>
#include <cmath>
#include <functional>
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
    return isReal() ? truncated<std::int64_t>(doubleValue()) : static_cast<std::int64_t>(bits_);
}

std::uint64_t Number::unsignedLongLongValue() const noexcept {
    return isReal() ? truncated<std::uint64_t>(doubleValue()) : bits_;
}

std::int32_t Number::intValue() const noexcept {
    return isReal() ? truncated<std::int32_t>(doubleValue()) : static_cast<std::int32_t>(bits_);
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
    if (isReal() || other.isReal()) {
        return orderedReals(doubleValue(), other.doubleValue());
    }
    const bool beyond = type_ == Type::kUnsigned && bits_ >> 63U != 0;
    const bool otherBeyond = other.type_ == Type::kUnsigned && other.bits_ >> 63U != 0;
    if (beyond != otherBeyond) {
        return beyond ? 1 : -1;
    }
    return beyond ? ordered(bits_, other.bits_) : ordered(longLongValue(), other.longLongValue());
}

bool Number::isEqual(const Object* other) const {
    const auto* number = as<Number>(other);
    return number != nullptr && isEqualToNumber(*number);
}

std::size_t Number::hash() const {
    return std::hash<double>{}(doubleValue());
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
Result readNumber(const RefPtr<Object>& value, Result (Number::*fromNumber)() const noexcept,
                  Result (String::*fromText)() const noexcept) {
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
    return readNumber(value, &Number::longLongValue, &String::longLongValue);
}

std::int32_t intValue(const RefPtr<Object>& value) {
    return readNumber(value, &Number::intValue, &String::intValue);
}

bool boolValue(const RefPtr<Object>& value) {
    return readNumber(value, &Number::boolValue, &String::boolValue);
}

} // namespace NS
