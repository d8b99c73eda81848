#pragma once

#include <cstdint>
#include <string>

namespace FileManagers::Measuring {

// A call of the plug-in by the file manager, for as long as this object lives. When it has ended it
// is written as a line to the file that QUORVANE_PLUG_IN_TIMES names, for scripts to read:
//
//     START DURATION DEPTH WHAT [RESULT]
//
// Microseconds of the monotonic clock; the depth is 0 for what the file manager calls, 1 for what
// that brings it to do, 2 for what it calls of the plug-in meanwhile. Use on the thread that draws
// the windows.
class TimedCall {
  public:
    explicit TimedCall(const char* what) noexcept;
    ~TimedCall();
    TimedCall(const TimedCall&) = delete;
    TimedCall& operator=(const TimedCall&) = delete;

    // Added to the line.
    void setResult(std::string result) { result_ = std::move(result); }

  private:
    const char* what_;
    std::string result_;
    std::int64_t start_;
};

// Writes a line of the same kind; does nothing when no file is named.
void writeTime(std::int64_t start, std::int64_t duration, int depth, const std::string& what);

} // namespace FileManagers::Measuring
