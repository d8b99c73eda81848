#pragma once

#include "Platform/Foundation/DateFormatter.h"
#include "Platform/Foundation/String.h"

#include <mutex>
#include <string_view>

// One file of a run, whose name is settled by the first message.
class LogFile {
  public:
    enum class Stamp { kNone, kFine };

    // Appends a message, after a stamp where it is asked for. The folder, with a slash at its end,
    // and the prefix matter for the first message only.
    void append(const NS::String& folder, const NS::String& prefix, std::string_view message,
                Stamp stamp);

  private:
    void create(const NS::String& folder, const NS::String& prefix);

    // An exception's handler may log while a line is being written on the same thread.
    std::recursive_mutex mutex_;
    NS::DateFormatter formatter_{"yyyy-MM-dd HH:mm:ss.SS"};
    NS::RefPtr<NS::String> path_;
};
