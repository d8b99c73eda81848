#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace Inspection {

// The commands of quorvane-inspect (Docs/inspector.md). Each writes to standard output, and raises
// Error, or what the platform raises, when it comes to no result.

enum class ReportForm : std::uint8_t { kPlain, kJson };

void showArchive(const std::string& file);

// With an archive, the record is written there as well; on standard output ("-") in place of the
// JSON. A name that is empty is one of a file that cannot be written.
void showItem(const std::string& className, const std::string& replyFile,
              const std::optional<std::string>& archiveFile);

void encodeValue(const std::string& valueFile, const std::string& archiveFile);

void listClasses();

// Lists logs and reports.
void showReports(ReportForm form);
// Notes on what could not be looked up go to standard error.
void showReport(const std::string& file);

} // namespace Inspection
