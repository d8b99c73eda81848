#include "Platform/Foundation/DateFormatter.h"

#include "Platform/Foundation/Clock.h"

namespace NS {

DateFormatter::Text::Text(std::string_view text) noexcept : length_(text.size()) {
    text.copy(characters_.data(), length_);
}

DateFormatter::Text DateFormatter::rendered(double timeIntervalSinceReferenceDate,
                                            DateStamp::ZoneLook look) noexcept {
    const std::lock_guard lock(mutex_);
    return Text(stamp_.text(timeIntervalSinceReferenceDate, look));
}

Ref<String> DateFormatter::stringFromDate(const Date& date) {
    return String::fromFileSystemRepresentation(
        rendered(date.timeIntervalSinceReferenceDate(), DateStamp::ZoneLook::kEachTime));
}

DateFormatter::Text DateFormatter::now() {
    return rendered(absoluteTimeGetCurrent(), DateStamp::ZoneLook::kEachSecond);
}

} // namespace NS
