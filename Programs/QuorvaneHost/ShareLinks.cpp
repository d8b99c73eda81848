#include "Programs/QuorvaneHost/ShareLinks.h"

#include "Platform/Foundation/Data.h"
#include "Platform/Foundation/FileManager.h"
#include "Platform/Foundation/ProcessInfo.h"
#include "Programs/Json/PercentEncoding.h"
#include "Programs/QuorvaneHost/DriveTree.h"
#include "Programs/QuorvaneHost/HostData.h"

#include <sstream>

namespace {

// A service of nobody's: the name is reserved for examples.
constexpr const char* kService = "https://share.quorvane.example/";
constexpr const char* kUrlKey = "URL=";

std::string urlIn(const std::string& contents) {
    std::istringstream lines(contents);
    for (std::string line; std::getline(lines, line);) {
        if (line.starts_with(kUrlKey)) {
            return line.substr(std::string_view(kUrlKey).size());
        }
    }
    return {};
}

} // namespace

ShareLinks::Link ShareLinks::linkTo(const std::string& path) const {
    NS::FileManager& files = NS::FileManager::defaultManager();
    const std::string file = folder_ + "/" + shortNameFor(path) + ".url";
    const auto name = NS::String::fromFileSystemRepresentation(file);
    if (const auto contents = files.contentsAtPath(name)) {
        if (std::string url = urlIn(std::string(NS::charactersOf(contents->bytes())));
            !url.empty()) {
            return {std::move(url), file};
        }
    }
    const std::string url =
        kService + NS::ProcessInfo::processInfo()->globallyUniqueString()->utf8().substr(0, 36);
    const std::string contents =
        "[InternetShortcut]\n" + (kUrlKey + url) + "\n# " + percentEncoded(path) + "\n";
    if (!files.createDirectoryAtPath(NS::String::fromFileSystemRepresentation(folder_)) ||
        !files.createFileAtPath_contents(name, NS::bytesOf(contents))) {
        throw Refusal("the link \"" + file + "\" cannot be written");
    }
    return {url, file};
}
