#pragma once

#include "Platform/Foundation/Object.h"

namespace NS {

// A moment, in seconds with fractions. Never changes; any thread.
class Date final : public Object {
    NS_OBJECT(Date)
  public:
    // Now; not the plain initialiser, so that a date is never read from the clock by accident.
    static Ref<Date> date();
    static Ref<Date> dateWithTimeIntervalSinceNow(double seconds);
    static Ref<Date> dateWithTimeIntervalSince1970(double seconds);
    // The year 4001: later than whatever is waited for. What waits until then waits for ever.
    static const Ref<Date>& distantFuture();
    explicit Date(double timeIntervalSinceReferenceDate) noexcept
        : seconds_(timeIntervalSinceReferenceDate) {}

    // Seconds since 2001-01-01 00:00:00 UTC.
    double timeIntervalSinceReferenceDate() const noexcept { return seconds_; }
    double timeIntervalSince1970() const noexcept;

    // Below zero for an earlier moment than the other, zero, or above.
    int compare(const Date& other) const noexcept;

    bool isEqual(const Object* other) const override;
    std::size_t hash() const override;
    // "2026-11-16 06:56:27 +0000": whole seconds in UTC.
    Ref<String> description() const override;
    void encodeWithCoder(KeyedArchiver& coder) const override;

  private:
    double seconds_;
};

} // namespace NS
