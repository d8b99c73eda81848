#pragma once

#include "Platform/Foundation/Object.h"
#include "Platform/Foundation/Property.h"
#include "Platform/Foundation/String.h"

#include <cstdint>

// The process's log: a text file for each run in the user's logging folder, named by the process's
// prefix and the moment of the first line. Docs/log-files.md shows one.
//
// Nothing stays open between two lines, so that nothing is lost when the process dies. What the
// file system refuses is lost without notice. Each operation is safe on any thread.
class QVLogging final : public NS::Object {
    NS_OBJECT(QVLogging)
  public:
    // Makes a new shared instance with this prefix and the user's logging folder, and has uncaught
    // exceptions logged from now on. Makes no file. A run whose file exists keeps to that file,
    // whatever the new prefix.
    static void setupWithPrefix(NS::RefPtr<NS::String> prefix);
    // Nil before the setup.
    static NS::RefPtr<QVLogging> sharedInstance();

    // First part of the file's name, such as "FE".
    NS_PROPERTY(NS::String, prefix, setPrefix)
    // The logging folder, with a slash at its end.
    NS_PROPERTY(NS::String, path, setPath)

    // Appends a message to the run's file as UTF-8, behind a stamp unless it is succinct, and
    // nothing behind it. The first message makes the folder and the file; a file that is removed
    // later is not made again, and the messages are lost.
    void fileMessage_succinct(const NS::RefPtr<NS::String>& message, bool succinct);
    // Appends a message as it is to a second file, made by the first message of this operation.
    void fileSuccinctMessage(const NS::RefPtr<NS::String>& message);

    // Prunes the logging folder to its 18 newest entries, and the extension's logging folder, as
    // its container shows it to the user's other processes, to 2. Raises as the next operation.
    void cleanup();
    // Removes all but the newest entries of a folder, by their creation dates, whatever they are; a
    // negative number removes none, and neither does a folder that cannot be read. Raises
    // NSInvalidArgumentException, and removes nothing, when an entry has no creation date.
    void cleanupLogsFolder_maxItems(const NS::RefPtr<NS::String>& folder, std::int32_t maxItems);

    // A mark that a process leaves while it runs, in the user defaults of its program; false where
    // there is none.
    bool checkQuitFlag() const;
    void setRunningFlag(bool flag);

    // For callers that keep such a date themselves: it is neither stored nor known.
    void setLastCrashReportDate(const NS::RefPtr<NS::Object>& date);
    NS::RefPtr<NS::Object> checkLastCrashReportDate() const;
};
