#pragma once

#include "Platform/Foundation/FileManager.h"
#include "Platform/Foundation/String.h"

#include <cstdint>
#include <optional>
#include <ostream>
#include <vector>

namespace Inspection {

struct ListedFile {
    NS::Ref<NS::String> path;
    std::optional<NS::FileAttributes> attributes; // nothing where it cannot be looked at
};

// The logs and reports that a gatherer of diagnostics finds, the latest creation first. The paths
// below the groups are what the discovery operations answer; nil is nothing found.
struct ReportListing {
    std::vector<ListedFile> logs;         // all entries of the logging folders
    std::vector<ListedFile> reports;      // crashes of the client, retired ones where they are
    std::vector<ListedFile> otherReports; // of other programs

    NS::RefPtr<NS::String> lastCreated;  // empty where no report has a date
    NS::RefPtr<NS::String> lastModified; // of all the client's files among the reports
    NS::RefPtr<NS::String> lastRetired;
    NS::RefPtr<NS::String> lastProcessed;
    NS::RefPtr<NS::String> installLog; // need not be there, and neither need the next
    NS::RefPtr<NS::String> renameLog;
};

// Sets the process's logging up, and ends with it writing nothing: see decision 0027.
ReportListing listReports();

// For people, with dates in local time.
void printReports(const ReportListing& listing, std::ostream& out);
// As JSON (Docs/inspector.md).
void printReportsAsJson(const ReportListing& listing, std::ostream& out);

} // namespace Inspection
