#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace NS {

// Moments as ISO 8601 has them, in UTC: "2026-11-16T06:56:27Z", with a fraction of any length after
// the seconds where there is one. Seconds count from 2001-01-01 00:00:00 UTC.

// The text that gives back the very same number, unless that took more than 20 places after the
// point. Nothing for a moment outside of the years 1 to 9999, since the format has four digits for
// them, and for what is no finite number.
std::optional<std::string> iso8601FromSeconds(double seconds);

// Nothing for any other text, or a day or time of day that does not exist.
std::optional<double> secondsFromIso8601(std::string_view text);

} // namespace NS
