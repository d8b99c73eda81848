#pragma once

#include "Platform/Foundation/Array.h"
#include "Platform/Foundation/Data.h"
#include "Platform/Foundation/Object.h"
#include "Platform/Foundation/Property.h"
#include "Platform/Foundation/String.h"

#include <cstdint>

namespace NS {
class FileManager;
}

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

    // Logs and reports, for a gatherer of diagnostics: Docs/crash-reports.md. They are told by
    // their files' names; none is opened. A folder that is missing or cannot be read has nothing in
    // it, and order is the file system's. Names that are not UTF-8 come through unchanged.

    // Every entry of the shared instance's logging folder, then of the extension's as its container
    // shows it: logs, the marker below and all else.
    NS::Ref<NS::Array> ongoingLogs() const;
    // Reports (.spin, .hang, .ips, .crash) of other programs than the client's in the user's
    // reports folder and the retired ones, then of all programs in the machine's two folders.
    NS::Ref<NS::Array> mainDiagnosticReports() const;
    // The client's own reports (.crash, .ips) in the user's reports folder, then the retired ones:
    // these too as paths in the reports folder, where there is mostly nothing of that name.
    NS::Ref<NS::Array> findQVDiagnosticReports() const;

    // The path of the entry that was modified last, of those in a folder whose names begin with one
    // of the prefixes (texts); nil when there is none, and for nil. Of equal dates the entry that
    // is listed last. An entry whose date cannot be read is older than every other.
    NS::RefPtr<NS::String> findNewestFileAt_prefixed(const NS::RefPtr<NS::String>& folder,
                                                     const NS::RefPtr<NS::Array>& prefixes) const;
    // The same for the client's files, of whatever kind, in the user's reports folder; and in that
    // of the retired ones.
    NS::RefPtr<NS::String> findQVDiagnosticReport() const;
    NS::RefPtr<NS::String> findQVDiagnosticRetiredReport() const;
    // Of what findQVDiagnosticReports() finds for the shared instance, the path whose file was
    // created last, the first of them where several were. Empty where none has a creation date
    // after 1970 began, as when only retired reports are left. Nil, and a line in the log, where
    // there are no reports; nil before the setup.
    NS::RefPtr<NS::String> getPathOfLastGeneratedCrashReport() const;

    // The folders' paths, whether they are there or not: the machine's reports, its retired ones,
    // and the user's.
    NS::Ref<NS::String> findAllDiagnosticReports() const;
    NS::Ref<NS::String> findAllDiagnosticRetiredReports() const;
    NS::Ref<NS::String> findAllHomeDiagnosticReports() const;
    NS::Ref<NS::String> findAllHomeDiagnosticRetiredReports() const;

    // The marker "PLPCR.s" in the user's logging folder keeps the path of the report that a caller
    // has dealt with. Pruned like a log, it may be gone.
    //
    // Replaces the marker. False, and nothing changed, when it cannot be written, the folder being
    // missing for instance, and for what UTF-8 cannot hold: nil, or a name that is not UTF-8.
    bool writePathOfLastProcessedCrashReport(const NS::RefPtr<NS::String>& path) const;
    // What the marker holds, the last path that was processed in spite of the name. Nil when it is
    // missing, is no regular file, is not valid UTF-8, or is longer than the file manager reads.
    NS::RefPtr<NS::String> getSavedPathOfLastGeneratedCrashReport() const;
    // Makes a file, empty for nil, where the file manager sees nothing. True in any case, also when
    // something was there, which stays as it is, and when the file could not be made.
    bool createAFileAtPath_byFileManager_withContent(const NS::RefPtr<NS::String>& path,
                                                     NS::FileManager& files,
                                                     const NS::RefPtr<NS::Data>& content) const;

    // The installer's log, beside the shared instance's logging folder; nil before the setup. It
    // need not exist, and neither need the next.
    NS::RefPtr<NS::String> findInstallLogFile() const;
    NS::Ref<NS::String> findLastRenameLog() const;
};
