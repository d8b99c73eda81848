#include "Platform/CrashReporter/ZoneOffsets.h"

namespace NS {

namespace {

constexpr std::int64_t kDay = 86400;
constexpr std::int64_t kFortnight = 14 * kDay;
constexpr std::int64_t kAhead = 400 * kDay;
constexpr int kFirstYear = 1970;
constexpr int kLastYear = 9999;

constexpr bool isLeapYear(int year) noexcept {
    return year % 4 == 0 && (year % 100 != 0 || year % 400 == 0);
}

constexpr int daysInYear(int year) noexcept {
    return isLeapYear(year) ? 366 : 365;
}

constexpr int daysInMonth(int year, int month) noexcept {
    constexpr std::array<int, 13> kDays = {0, 31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    return kDays.at(static_cast<std::size_t>(month)) + (month == 2 && isLeapYear(year) ? 1 : 0);
}

// The first moment of another offset than the one before, of which there is one in between.
std::int64_t changeBetween(std::int64_t before, std::int64_t after) noexcept {
    const std::int32_t first = offsetFromUtc(before);
    while (after - before > 1) {
        const std::int64_t middle = before + (after - before) / 2;
        (offsetFromUtc(middle) == first ? before : after) = middle;
    }
    return after;
}

} // namespace

LocalTime civilTime(std::int64_t secondsSince1970, std::int32_t offset) noexcept {
    const std::int64_t seconds = secondsSince1970 + offset < 0 ? 0 : secondsSince1970 + offset;
    std::int64_t days = seconds / kDay;
    const auto ofDay = static_cast<int>(seconds % kDay);
    int year = kFirstYear;
    for (; days >= daysInYear(year) && year < kLastYear; ++year) {
        days -= daysInYear(year);
    }
    int month = 1;
    for (; month < 12 && days >= daysInMonth(year, month); ++month) {
        days -= daysInMonth(year, month);
    }
    return {year, month, static_cast<int>(days) + 1, ofDay / 3600, ofDay / 60 % 60, ofDay % 60};
}

ZoneOffsets ZoneOffsets::from(std::int64_t secondsSince1970) noexcept {
    ZoneOffsets zone;
    lookAtTimeZone();
    zone.first_ = offsetFromUtc(secondsSince1970);
    std::int32_t before = zone.first_;
    // A fortnight is shorter than any rule lasts.
    for (std::int64_t ahead = kFortnight; ahead < kAhead + kFortnight; ahead += kFortnight) {
        const std::int64_t moment = secondsSince1970 + ahead;
        const std::int32_t offset = offsetFromUtc(moment);
        if (offset != before && zone.count_ < zone.changes_.size()) {
            zone.changes_[zone.count_++] = {changeBetween(moment - kFortnight, moment), offset};
        }
        before = offset;
    }
    return zone;
}

std::int32_t ZoneOffsets::at(std::int64_t secondsSince1970) const noexcept {
    std::int32_t offset = first_;
    for (std::size_t i = 0; i < count_ && changes_[i].moment <= secondsSince1970; ++i) {
        offset = changes_[i].offset;
    }
    return offset;
}

} // namespace NS
