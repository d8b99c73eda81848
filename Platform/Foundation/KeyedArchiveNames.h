#pragma once

#include <cstdint>
#include <string_view>

// The format's own words. Keys that begin with "$" are its own as well: one that an object uses
// gets a second "$" in front.
namespace NS::KeyedArchiveNames {

inline constexpr std::string_view kArchiverKey = "$archiver";
inline constexpr std::string_view kArchiverName = "NSKeyedArchiver";
inline constexpr std::string_view kVersionKey = "$version";
inline constexpr std::int64_t kVersion = 100000;
inline constexpr std::string_view kTopKey = "$top";
inline constexpr std::string_view kRootKey = "root";
inline constexpr std::string_view kObjectsKey = "$objects";
inline constexpr std::string_view kNull = "$null";

// In the dictionary of an object.
inline constexpr std::string_view kClassKey = "$class";
// In that of a date: seconds since 2001.
inline constexpr std::string_view kTimeKey = "NS.time";
// In the dictionary of a class.
inline constexpr std::string_view kClassName = "$classname";
inline constexpr std::string_view kClasses = "$classes";
// Names of classes that can stand in for one that is not known.
inline constexpr std::string_view kClassHints = "$classhints";

} // namespace NS::KeyedArchiveNames
