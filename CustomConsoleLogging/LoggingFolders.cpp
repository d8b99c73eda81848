#include "CustomConsoleLogging/LoggingFolders.h"

#include "CustomConsoleLogging/QVLogging.h"
#include "Platform/Foundation/Array.h"
#include "Platform/Foundation/FileManager.h"
#include "Platform/Foundation/SearchPaths.h"

namespace {

constexpr std::string_view kLogDirectory = "/Quorvane/LogDirectory/";

// Below the user's home folder.
constexpr std::string_view kContainedLogDirectory =
    "Library/Containers/com.Quorvane.Quorvane.QVFinderExtension/Data/Library/Application Support/"
    "Quorvane/LogDirectory";

} // namespace

NS::Ref<NS::String> userLoggingFolder() {
    return NS::searchPathForDirectoryInDomain(NS::SearchPathDirectory::kApplicationSupport,
                                              NS::SearchPathDomain::kUser)
        ->stringByAppendingString(*NS::str(kLogDirectory));
}

NS::RefPtr<NS::String> ownLoggingFolder() {
    const auto logging = QVLogging::sharedInstance();
    return logging ? logging->path() : nullptr;
}

NS::Ref<NS::String> containedLoggingFolder() {
    return pathBelow(*NS::homeDirectory(), kContainedLogDirectory);
}

NS::Ref<NS::String> pathBelow(const NS::String& folder, std::string_view component) {
    return folder.stringByAppendingPathComponent(*NS::str(component));
}

std::vector<NS::Ref<NS::String>> namesIn(const NS::RefPtr<NS::String>& folder) {
    NS::FileManager& files = NS::FileManager::defaultManager();
    const NS::RefPtr<NS::Array> listed =
        folder ? files.contentsOfDirectoryAtPath(*folder) : nullptr;
    std::vector<NS::Ref<NS::String>> names;
    if (listed) {
        names.reserve(listed->count());
        for (const NS::Ref<NS::Object>& name : *listed) {
            names.emplace_back(*NS::cast<NS::String>(name));
        }
    }
    return names;
}
