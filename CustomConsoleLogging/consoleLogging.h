#pragma once

#include "Platform/Foundation/Exception.h"
#include "Platform/Foundation/Format.h"
#include "Platform/Foundation/Property.h"
#include "Platform/Foundation/String.h"

#include <array>
#include <cstdint>
#include <span>
#include <string_view>

// The process's log file: one a run, named by the process's prefix and the moment of its first
// line.
//
// Nothing is open between two lines, so that nothing is lost when the process dies. What the file
// system refuses is lost without notice. Docs/log-files.md has the layout.
class QVLogging final : public NS::Object {
    NS_OBJECT(QVLogging)
  public:
    // Makes the shared instance, in place of an earlier one, for files with this prefix in the
    // user's logging folder, and has uncaught exceptions logged. A file that a line was already
    // written to stays the run's file. Main thread, before others log.
    static void setupWithPrefix(const NS::Ref<NS::String>& prefix);
    // Nil before setup.
    static NS::RefPtr<QVLogging> sharedInstance();

    // Appends a text to the run's file, with a fine stamp before it unless succinct, and nothing
    // after it. The first call makes the folder and the file; a file that was removed since is not
    // made again. Any thread.
    void fileMessage_succinct(const NS::String& message, bool succinct);
    // Appends a text as it is to a file of its own, made at its own first call. Any thread.
    void fileSuccinctMessage(const NS::String& message);

    // Keeps the newest entries of the logging folder, and fewer of the extension's folder as it is
    // seen from the user's home.
    void cleanup();
    // Removes all but the newest entries of a folder, by creation date, whatever they are; a
    // negative number removes none. Raises NSInvalidArgumentException for an entry whose date
    // cannot be read.
    void cleanupLogsFolder_maxItems(const NS::String& folder, std::int32_t maxItems);

    // A mark that a process leaves while it runs; false when there is none.
    bool checkQuitFlag() const;
    void setRunningFlag(bool flag);

    // Kept for their callers: the date is neither stored nor known.
    void setLastCrashReportDate(const NS::RefPtr<NS::Object>& date);
    NS::RefPtr<NS::Object> checkLastCrashReportDate() const;

    // First part of the file's name.
    NS_PROPERTY(NS::String, prefix, setPrefix)
    // The logging folder, with a slash at its end.
    NS_PROPERTY(NS::String, path, setPath)
};

// Logs an exception that nothing caught: its reason, its user info and each frame of its call
// stack.
void exceptionHandler(const NS::Exception& exception);

// The names begin with an underscore because the system's callers have always written them so.
// NOLINTBEGIN(bugprone-reserved-identifier)
void _LogArguments(std::string_view format, std::span<const NS::FormatArgument> arguments);
void _SuccinctlyLogArguments(std::string_view format,
                             std::span<const NS::FormatArgument> arguments);

// Writes one line with a coarse stamp, and the file's fine one before it. Level, file, line and
// function tell readers of the code where it is from; no output shows them. Lost before setup.
template <class... Args>
void _Log(const char* /*level*/, const char* /*file*/, std::int32_t /*line*/,
          const char* /*function*/, std::string_view format, const Args&... arguments) {
    const std::array<NS::FormatArgument, sizeof...(Args)> list{NS::FormatArgument(arguments)...};
    _LogArguments(format, list);
}

// The same without any stamp.
template <class... Args>
void _SuccinctlyLog(const char* /*level*/, const char* /*file*/, std::int32_t /*line*/,
                    const char* /*function*/, std::string_view format, const Args&... arguments) {
    const std::array<NS::FormatArgument, sizeof...(Args)> list{NS::FormatArgument(arguments)...};
    _SuccinctlyLogArguments(format, list);
}
// NOLINTEND(bugprone-reserved-identifier)
