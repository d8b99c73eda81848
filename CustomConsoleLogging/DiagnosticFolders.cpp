#include "CustomConsoleLogging/LoggingFolders.h"
#include "CustomConsoleLogging/QVLogging.h"
#include "Platform/Foundation/SearchPaths.h"

namespace {

constexpr std::string_view kReports = "Logs/DiagnosticReports";
constexpr std::string_view kRetiredReports = "Logs/DiagnosticReports/Retired";

NS::Ref<NS::String> libraryFolder(NS::SearchPathDomain domain) {
    return NS::searchPathForDirectoryInDomain(NS::SearchPathDirectory::kLibrary, domain);
}

} // namespace

NS::Ref<NS::String> QVLogging::findAllDiagnosticReports() const {
    return pathBelow(*libraryFolder(NS::SearchPathDomain::kLocal), kReports);
}

NS::Ref<NS::String> QVLogging::findAllDiagnosticRetiredReports() const {
    return pathBelow(*libraryFolder(NS::SearchPathDomain::kLocal), kRetiredReports);
}

NS::Ref<NS::String> QVLogging::findAllHomeDiagnosticReports() const {
    return pathBelow(*libraryFolder(NS::SearchPathDomain::kUser), kReports);
}

NS::Ref<NS::String> QVLogging::findAllHomeDiagnosticRetiredReports() const {
    return pathBelow(*libraryFolder(NS::SearchPathDomain::kUser), kRetiredReports);
}

NS::RefPtr<NS::String> QVLogging::findInstallLogFile() const {
    const NS::RefPtr<NS::String> folder = ownLoggingFolder();
    if (!folder) {
        return nullptr;
    }
    const auto above = folder->stringByDeletingLastPathComponent();
    return pathBelow(*pathBelow(*above, "qvinst"), "install-log.txt");
}

NS::Ref<NS::String> QVLogging::findLastRenameLog() const {
    return NS::str("/tmp/rn_items");
}
