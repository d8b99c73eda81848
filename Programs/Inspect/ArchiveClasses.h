#pragma once

#include <cstdint>
#include <string_view>

namespace Inspection {

// How the objects of a class are shown.
enum class Shape : std::uint8_t {
    kRecord,
    kArray,
    kSet,
    kDictionary,
    kText,
    kData,
    kDate,
    kNumber,
    kNull,
};

// The platform's classes that JSON has a counterpart or a form for; any other class is a record.
Shape shapeOfClass(std::string_view name) noexcept;

} // namespace Inspection
