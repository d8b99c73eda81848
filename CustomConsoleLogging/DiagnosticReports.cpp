#include "CustomConsoleLogging/DiagnosticReports.h"

#include "CustomConsoleLogging/LoggingFolders.h"
#include "CustomConsoleLogging/QVLogging.h"

#include <algorithm>
#include <span>
#include <string>

namespace {

constexpr std::string_view kReportKinds[] = {".spin", ".hang", ".ips", ".crash"};
constexpr std::string_view kCrashKinds[] = {".crash", ".ips"};

bool endsInOneOf(std::string_view name, std::span<const std::string_view> kinds) {
    return std::ranges::any_of(kinds, [&](std::string_view kind) { return name.ends_with(kind); });
}

bool isOfTheClient(std::string_view name) {
    return std::ranges::any_of(kClientProcesses,
                               [&](std::string_view process) { return name.starts_with(process); });
}

bool isReport(std::string_view name) {
    return endsInOneOf(name, kReportKinds);
}

bool isForeignReport(std::string_view name) {
    return isReport(name) && !isOfTheClient(name);
}

bool isCrashOfTheClient(std::string_view name) {
    return endsInOneOf(name, kCrashKinds) && isOfTheClient(name);
}

bool isAnything(std::string_view /*name*/) {
    return true;
}

// Adds a path for each name in a folder that passes the test: the name in another folder.
void addNamesIn(const NS::RefPtr<NS::String>& folder, bool (*test)(std::string_view),
                const NS::String& pathsIn, NS::MutableArray& paths) {
    for (const NS::Ref<NS::String>& name : namesIn(folder)) {
        if (test(name->fileSystemRepresentation())) {
            paths.addObject(pathsIn.stringByAppendingPathComponent(*name));
        }
    }
}

void addEntriesOf(const NS::RefPtr<NS::String>& folder, bool (*test)(std::string_view),
                  NS::MutableArray& paths) {
    if (folder) {
        addNamesIn(folder, test, *folder, paths);
    }
}

} // namespace

NS::Ref<NS::Array> QVLogging::ongoingLogs() const {
    const auto paths = NS::make<NS::MutableArray>();
    addEntriesOf(ownLoggingFolder(), isAnything, *paths);
    addEntriesOf(containedLoggingFolder(), isAnything, *paths);
    return paths;
}

NS::Ref<NS::Array> QVLogging::mainDiagnosticReports() const {
    const auto paths = NS::make<NS::MutableArray>();
    addEntriesOf(findAllHomeDiagnosticReports(), isForeignReport, *paths);
    addEntriesOf(findAllHomeDiagnosticRetiredReports(), isForeignReport, *paths);
    addEntriesOf(findAllDiagnosticReports(), isReport, *paths);
    addEntriesOf(findAllDiagnosticRetiredReports(), isReport, *paths);
    return paths;
}

// A retired report keeps its name and gets a path where it no longer is. It is meant so:
// DiagnosticReports.GivesARetiredReportAPathInTheReportsFolder holds it.
NS::Ref<NS::Array> QVLogging::findQVDiagnosticReports() const {
    const auto paths = NS::make<NS::MutableArray>();
    const auto reports = findAllHomeDiagnosticReports();
    addNamesIn(reports, isCrashOfTheClient, *reports, *paths);
    addNamesIn(pathBelow(*reports, "Retired"), isCrashOfTheClient, *reports, *paths);
    return paths;
}
