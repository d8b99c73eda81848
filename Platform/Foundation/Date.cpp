#include "Platform/Foundation/Date.h"

#include "Platform/Foundation/Clock.h"
#include "Platform/Foundation/Format.h"

#include <chrono>
#include <cmath>
#include <functional>

namespace NS {

constinit const Class Date::kClass{.name = "NSDate", .superclass = &Object::kClass};

namespace {

// Seconds from 1970-01-01 to 2001-01-01, both at midnight UTC.
constexpr double kReferenceDate = 978307200.0;
// Years beyond four digits are no dates that anyone means; the number itself tells more.
constexpr double kLastSecondOfYear9999 = 252423993599.0;
constexpr double kFirstSecondOfYear1 = -63113904000.0;

} // namespace

Ref<Date> Date::date() {
    return make<Date>(absoluteTimeGetCurrent());
}

Ref<Date> Date::dateWithTimeIntervalSinceNow(double seconds) {
    return make<Date>(absoluteTimeGetCurrent() + seconds);
}

Ref<Date> Date::dateWithTimeIntervalSince1970(double seconds) {
    return make<Date>(seconds - kReferenceDate);
}

double Date::timeIntervalSince1970() const noexcept {
    return seconds_ + kReferenceDate;
}

int Date::compare(const Date& other) const noexcept {
    return seconds_ == other.seconds_ ? 0 : (seconds_ < other.seconds_ ? -1 : 1);
}

bool Date::isEqual(const Object* other) const {
    const auto* date = as<Date>(other);
    return date != nullptr && seconds_ == date->seconds_;
}

std::size_t Date::hash() const {
    return std::hash<double>{}(seconds_);
}

Ref<String> Date::description() const {
    using namespace std::chrono;
    if (!(seconds_ >= kFirstSecondOfYear1 && seconds_ <= kLastSecondOfYear9999 + 1)) {
        return stringWithFormat("%0.16g seconds since 2001-01-01 00:00:00 +0000", seconds_);
    }
    const sys_seconds moment{
        seconds(static_cast<std::int64_t>(std::floor(timeIntervalSince1970())))};
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
