#include "Platform/Foundation/Date.h"

#include "Platform/Foundation/Clock.h"
#include "Platform/Foundation/Format.h"
#include "Platform/Foundation/Hashing.h"

#include <chrono>
#include <cmath>
#include <cstdint>

namespace NS {

constinit const Class Date::kClass{.name = "NSDate", .superclass = &Object::kClass};

namespace {

// Years beyond four digits are no dates that anyone means; the number itself tells more.
constexpr double kStartOfYear1 = -63113904000.0;
constexpr double kStartOfYear4001 = 63113904000.0;
constexpr double kStartOfYear10000 = 252423993600.0;

} // namespace

Ref<Date> Date::date() {
    return make<Date>(absoluteTimeGetCurrent());
}

Ref<Date> Date::dateWithTimeIntervalSinceNow(double seconds) {
    return make<Date>(absoluteTimeGetCurrent() + seconds);
}

Ref<Date> Date::dateWithTimeIntervalSince1970(double seconds) {
    return make<Date>(seconds - kTimeIntervalSince1970);
}

const Ref<Date>& Date::distantFuture() {
    static const Ref<Date>& date = *new Ref<Date>(make<Date>(kStartOfYear4001));
    return date;
}

double Date::timeIntervalSince1970() const noexcept {
    return seconds_ + kTimeIntervalSince1970;
}

int Date::compare(const Date& other) const noexcept {
    return seconds_ == other.seconds_ ? 0 : (seconds_ < other.seconds_ ? -1 : 1);
}

bool Date::isEqual(const Object* other) const {
    const auto* date = as<Date>(other);
    return this == other || (date != nullptr && seconds_ == date->seconds_);
}

std::size_t Date::hash() const {
    return hashOfReal(seconds_);
}

Ref<String> Date::description() const {
    using namespace std::chrono;
    if (!(seconds_ >= kStartOfYear1 && seconds_ < kStartOfYear10000)) {
        return stringWithFormat("%0.16g seconds since 2001-01-01 00:00:00 +0000", seconds_);
    }
    // Whole seconds first: the sum could round a fraction up to the next of them.
    const sys_seconds moment{
        seconds(static_cast<std::int64_t>(std::floor(seconds_) + kTimeIntervalSince1970))};
    const sys_days day = floor<days>(moment);
    const year_month_day date{day};
    const hh_mm_ss time{moment - day};
    return stringWithFormat("%04d-%02u-%02u %02d:%02d:%02d +0000", static_cast<int>(date.year()),
                            static_cast<unsigned>(date.month()), static_cast<unsigned>(date.day()),
                            static_cast<int>(time.hours().count()),
                            static_cast<int>(time.minutes().count()),
                            static_cast<int>(time.seconds().count()));
}

} // namespace NS
