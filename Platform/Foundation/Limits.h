#pragma once

#include <cstddef>
#include <cstdint>

// How far input from outside the process is followed. Everything beyond is refused with an
// exception or an error, never followed until memory or the stack runs out.
namespace NS::Limits {

// How deep collections and records may stand within one another. Reading, comparing and releasing
// them recurse once or a few times a level, so that this bounds the stack: half a megabyte where
// the default stack has eight. People nest a handful of levels.
inline constexpr std::size_t kDepth = 512;

// How many collections one comparison, or one use of a key on all that an array holds, may visit:
// for each reference that the collections at hand have, and at least. An honest one visits what is
// behind each reference once, and looks at a few more where keys or members of sets collide. A
// hundred collections that hold each other twice have 2^100 paths.
inline constexpr std::uint64_t kVisitsPerReference = 4;
inline constexpr std::uint64_t kVisitsAtLeast = 1'000'000;

// How many units of work an archive may cost in looking for equal keys and equal members of sets,
// for each of its bytes and at least. A unit is a small object compared or hashed, or 64 bytes of a
// long one. An honest archive takes a unit or two for each key, and a key takes more than six
// bytes; many keys that share a long list take more, which is what the least is for. A hostile
// archive can make the work grow with the square of its size, or exponentially.
inline constexpr std::uint64_t kEqualityWorkPerByte = 4;
inline constexpr std::uint64_t kEqualityWorkAtLeast = 1'000'000;

// How many elements the collections of an archive may have in all beyond one for each of its bytes,
// which is what there are when each has a list of its own. Writers that write equal lists once let
// many objects refer to the same one: a thousand sets of five hundred in a few kilobytes.
inline constexpr std::uint64_t kSharedElements = 500'000;

// How many positions of a class's records have their keys remembered between records. The longest
// record of the system has 16 keys.
inline constexpr std::size_t kRememberedKeys = 64;

// How many characters of a name from outside stand in an exception's reason.
inline constexpr std::size_t kQuotedName = 100;

} // namespace NS::Limits
