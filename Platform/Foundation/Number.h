#pragma once

#include "Platform/Foundation/Object.h"

#include <cstdint>

namespace NS {

// A number that remembers the type it was made from, for its description and its place in an
// archive. Equality is by value, whatever the types. Never changes; any thread.
class Number final : public Object {
    NS_OBJECT(Number)
  public:
    enum class Type : std::uint8_t { kBoolean, kInteger, kUnsigned, kFloat, kDouble };

    static Ref<Number> numberWithBool(bool value);
    static Ref<Number> numberWithInt(std::int32_t value) { return numberWithLongLong(value); }
    static Ref<Number> numberWithLongLong(std::int64_t value);
    static Ref<Number> numberWithUnsignedLongLong(std::uint64_t value);
    static Ref<Number> numberWithFloat(float value);
    static Ref<Number> numberWithDouble(double value);

    Type type() const noexcept { return type_; }

    // The value in another type. A fraction is cut off toward zero, a number beyond the range gives
    // the nearest limit, as a text does, and not-a-number gives 0.
    std::int64_t longLongValue() const noexcept;
    std::int32_t intValue() const noexcept;
    // The same, but a negative integer gives its bits, as a conversion of C does: a storage limit
    // below zero is to come out as no amount at all, not as an amount of zero.
    std::uint64_t unsignedLongLongValue() const noexcept;
    double doubleValue() const noexcept;
    bool boolValue() const noexcept;

    bool isEqualToNumber(const Number& other) const noexcept { return compare(other) == 0; }
    // Below zero, zero or above, by the exact values. Not-a-number equals itself and sorts before
    // everything else.
    int compare(const Number& other) const noexcept;

    bool isEqual(const Object* other) const override;
    std::size_t hash() const override;
    // Integers in decimal, a boolean as 1 or 0, real numbers as "%0.7g" and "%0.16g".
    Ref<String> description() const override;

  private:
    template <class T, class... Args>
    friend Ref<T> make(Args&&... args);

    Number(Type type, std::uint64_t bits) noexcept : type_(type), bits_(bits) {}
    bool isReal() const noexcept { return type_ == Type::kFloat || type_ == Type::kDouble; }
    bool isBeyondSigned() const noexcept { return type_ == Type::kUnsigned && bits_ >> 63U != 0; }

    Type type_;
    std::uint64_t bits_; // two's complement, or the bits of a double
};

// What an untyped value answers when it is read as a number: numbers and texts give theirs, nil
// gives 0 or false, any other object raises NSInvalidArgumentException.
std::int64_t longLongValue(const RefPtr<Object>& value);
std::int32_t intValue(const RefPtr<Object>& value);
double doubleValue(const RefPtr<Object>& value);
bool boolValue(const RefPtr<Object>& value);

} // namespace NS
