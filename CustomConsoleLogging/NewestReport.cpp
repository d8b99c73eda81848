#include "CustomConsoleLogging/DiagnosticReports.h"
#include "CustomConsoleLogging/LoggingFolders.h"
#include "CustomConsoleLogging/QVLogging.h"
#include "CustomConsoleLogging/consoleLogging.h"
#include "Platform/Foundation/FileManager.h"

#include <algorithm>
#include <optional>

namespace {

// Nothing where the entry cannot be looked at, which sorts before every date.
std::optional<double> modificationTime(const NS::String& path) {
    const auto attributes = NS::FileManager::defaultManager().attributesOfItemAtPath(path);
    return attributes && attributes->modificationDate
               ? std::optional(attributes->modificationDate->timeIntervalSince1970())
               : std::nullopt;
}

NS::RefPtr<NS::Date> creationDate(const NS::String& path) {
    const auto attributes = NS::FileManager::defaultManager().attributesOfItemAtPath(path);
    return attributes ? attributes->creationDate : nullptr;
}

bool beginsWithOneOf(const NS::String& name, const NS::Array& prefixes) {
    return std::ranges::any_of(prefixes, [&](const NS::Ref<NS::Object>& prefix) {
        return name.hasPrefix(*NS::cast<NS::String>(prefix));
    });
}

NS::Ref<NS::Array> clientProcesses() {
    const auto names = NS::make<NS::MutableArray>();
    for (const std::string_view process : kClientProcesses) {
        names->addObject(NS::str(process));
    }
    return names;
}

// Of paths in order, the first one of those with the latest creation; empty where none has a
// creation after 1970 began.
NS::Ref<NS::String> latestCreated(const NS::Array& paths) {
    auto latest = NS::str("");
    auto latestDate = NS::Date::dateWithTimeIntervalSince1970(0);
    for (const NS::Ref<NS::Object>& each : paths) {
        const NS::Ref<NS::String> path(*NS::cast<NS::String>(each));
        const NS::RefPtr<NS::Date> date = creationDate(*path);
        if (date && date->compare(*latestDate) > 0) {
            latestDate = NS::Ref<NS::Date>(*date);
            latest = path;
        }
    }
    return latest;
}

} // namespace

NS::RefPtr<NS::String>
QVLogging::findNewestFileAt_prefixed(const NS::RefPtr<NS::String>& folder,
                                     const NS::RefPtr<NS::Array>& prefixes) const {
    NS::RefPtr<NS::String> newest;
    std::optional<double> newestTime;
    for (const NS::Ref<NS::String>& name : namesIn(prefixes ? folder : nullptr)) {
        if (!beginsWithOneOf(*name, *prefixes)) {
            continue;
        }
        const auto path = folder->stringByAppendingPathComponent(*name);
        const std::optional<double> time = modificationTime(*path);
        if (!newest || time >= newestTime) {
            newest = path;
            newestTime = time;
        }
    }
    return newest;
}

NS::RefPtr<NS::String> QVLogging::findQVDiagnosticReport() const {
    return findNewestFileAt_prefixed(findAllHomeDiagnosticReports(), clientProcesses());
}

NS::RefPtr<NS::String> QVLogging::findQVDiagnosticRetiredReport() const {
    return findNewestFileAt_prefixed(findAllHomeDiagnosticRetiredReports(), clientProcesses());
}

NS::RefPtr<NS::String> QVLogging::getPathOfLastGeneratedCrashReport() const {
    const auto logging = sharedInstance();
    const auto reports =
        logging ? logging->findQVDiagnosticReports() : NS::Array::arrayWithObjects({});
    if (reports->count() == 0) {
        _Log("DEBUG ", nullptr, 0, nullptr, "getPathOfLastGeneratedCrashReport returns nil");
        return nullptr;
    }
    return latestCreated(*reports);
}
