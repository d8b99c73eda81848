#pragma once

#include "Platform/Foundation/Dictionary.h"
#include "QVApi/Content/QVFolderListItem.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

// Listings of a folder in every form that the benchmarks compare.
namespace Benchmarks {

// A file as a plain program would hold it.
struct File {
    std::string identifier;
    std::string name;
    std::int64_t size;
    std::int64_t compression;
    std::int64_t modified; // seconds since 1970
};

// Between 2001, where archives begin to count, and 1970.
inline constexpr std::int64_t kReferenceDate = 978'307'200;
// What a listing's own number of its last change is.
inline constexpr std::int64_t kUpdateTime = 1'500'000'000;
// Its name, its parent's identifier and the kind of the reply it came with.
inline constexpr const char* kListingText = "1500000000";

// Numbered files whose names end so, in UTF-8.
std::vector<File> filesOf(std::size_t count, const char* ending = ".jpeg");

// A reply of the service with these files and numbered folders: every value a text.
NS::Ref<NS::Dictionary> replyWith(const std::vector<File>& files, std::size_t folders);

// The record of it. Raises when the reply makes none.
NS::Ref<QVFolderListItem> listingWith(const std::vector<File>& files, std::size_t folders);

} // namespace Benchmarks
