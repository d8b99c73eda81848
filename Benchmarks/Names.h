#pragma once

// What the benchmarks are called: subject/operation, and the number of entries behind it. A filter
// names them by these, and results are compared by them, so that they stay as they are.
namespace Benchmarks::Names {

inline constexpr const char* kListingMap = "Listing/map";
inline constexpr const char* kListingArchive = "Listing/archive";
inline constexpr const char* kListingRestore = "Listing/restore";
inline constexpr const char* kListingItemNamed = "Listing/itemNamed";
inline constexpr const char* kListingItemNamedWide = "Listing/itemNamed, names not ASCII";
inline constexpr const char* kListingInsert = "Listing/insertItem";
inline constexpr const char* kListingFill = "Listing/fill by insertItem";
inline constexpr const char* kListingRemove = "Listing/removeItemNamed";
inline constexpr const char* kListingCompare = "Listing/isEqual of two replies";

} // namespace Benchmarks::Names
