#pragma once

#include <cstddef>

// What decoding allows an archive to ask for.
namespace NS::ArchiveLimits {

// Objects within objects. Decoding them uses the stack, and so does letting go of them.
inline constexpr int kDepth = 500;
// Collections as members of a set, or keys of a dictionary: all of one size share one hash, so that
// finding one compares it with all the others.
inline constexpr std::size_t kCollectionKeys = 256;
// Objects in one such collection, those within included and counted each time they are met:
// comparing two of them visits as many.
inline constexpr std::size_t kCollectionKeySize = 256;

} // namespace NS::ArchiveLimits
