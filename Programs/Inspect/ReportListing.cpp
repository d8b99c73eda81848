#include "Programs/Inspect/ReportListing.h"

#include "CustomConsoleLogging/QVLogging.h"
#include "Platform/Foundation/Array.h"

#include <algorithm>
#include <limits>
#include <set>
#include <string>

namespace Inspection {

namespace {

ListedFile look(const NS::String& path) {
    return {NS::Ref<NS::String>(*path.copy()),
            NS::FileManager::defaultManager().attributesOfItemAtPath(path)};
}

double creationOf(const ListedFile& file) {
    return file.attributes && file.attributes->creationDate
               ? file.attributes->creationDate->timeIntervalSinceReferenceDate()
               : -std::numeric_limits<double>::infinity();
}

std::vector<ListedFile> newestFirst(std::vector<ListedFile> files) {
    std::ranges::stable_sort(files, std::greater(), creationOf);
    return files;
}

std::vector<ListedFile> filesAt(const NS::Array& paths) {
    std::vector<ListedFile> files;
    for (const NS::Ref<NS::Object>& path : paths) {
        files.push_back(look(*NS::cast<NS::String>(path)));
    }
    return newestFirst(std::move(files));
}

// The operation gives retired reports paths in the reports folder: what is not there, or was there
// already, is looked for where it is.
std::vector<ListedFile> ownReports(const QVLogging& logging) {
    std::vector<ListedFile> files;
    std::set<std::string> taken;
    const auto paths = logging.findQVDiagnosticReports();
    const auto retired = logging.findAllHomeDiagnosticRetiredReports();
    for (const NS::Ref<NS::Object>& each : *paths) {
        const NS::Ref<NS::String> path(*NS::cast<NS::String>(each));
        const bool isFirst = taken.insert(path->fileSystemRepresentation()).second;
        ListedFile file = look(*path);
        if (!isFirst || !file.attributes) {
            file = look(*retired->stringByAppendingPathComponent(*path->lastPathComponent()));
        }
        files.push_back(std::move(file));
    }
    return newestFirst(std::move(files));
}

} // namespace

ReportListing listReports() {
    QVLogging::setupWithPrefix(NS::str("Inspect"));
    const auto shared = QVLogging::sharedInstance();
    QVLogging& logging = *shared;
    ReportListing listing;
    listing.logs = filesAt(*logging.ongoingLogs());
    listing.reports = ownReports(logging);
    listing.otherReports = filesAt(*logging.mainDiagnosticReports());
    listing.installLog = logging.findInstallLogFile();
    listing.renameLog = logging.findLastRenameLog();
    listing.lastModified = logging.findQVDiagnosticReport();
    listing.lastRetired = logging.findQVDiagnosticRetiredReport();
    listing.lastProcessed = logging.getSavedPathOfLastGeneratedCrashReport();
    // Where it finds nothing the next one logs a line, which would be a log more than the listing
    // shows. Without a folder a line is lost.
    logging.setPath(nullptr);
    listing.lastCreated = logging.getPathOfLastGeneratedCrashReport();
    return listing;
}

} // namespace Inspection
