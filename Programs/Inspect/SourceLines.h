#pragma once

#include <chrono>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace Inspection {

struct SourceLine {
    bool operator==(const SourceLine&) const = default;

    std::string function; // empty where it is not known
    std::string place;    // file and line, and perhaps column; empty where it is not known
};

// Looks up what stands at addresses of a program or library, by one of the tools that come with
// elfutils and binutils. All look-ups together take no longer than a limit.
class SourceLookup {
  public:
    enum class Outcome : std::uint8_t { kDone, kNoTool, kFailed };

    explicit SourceLookup(std::chrono::milliseconds limit = kLimit)
        : deadline_(std::chrono::steady_clock::now() + limit) {}

    // For each address, as the file was linked for, the line that stands there, and behind it those
    // that it was inlined into; none where nothing is known. In the addresses' order; empty unless
    // it is done. The path is absolute.
    Outcome look(const std::string& path, std::span<const std::uint64_t> addresses,
                 std::vector<std::vector<SourceLine>>& lines) const;

    // Large libraries take seconds, and a report names a few.
    static constexpr std::chrono::seconds kLimit{60};
    // A few hundred addresses a kilobyte each.
    static constexpr std::size_t kLongestAnswer = std::size_t{4} << 20U;

  private:
    std::chrono::steady_clock::time_point deadline_;
};

} // namespace Inspection
