#include "Programs/QuorvaneHost/ItemProperties.h"

#include "Platform/Foundation/Date.h"
#include "Platform/Foundation/FileManager.h"
#include "Programs/QuorvaneHost/FolderWalk.h"

#include <array>
#include <ctime>

using Kind = NS::FileAttributes::Kind;

namespace {

const char* nameOf(Kind kind) {
    switch (kind) {
    case Kind::kRegular:
        return "file";
    case Kind::kDirectory:
        return "folder";
    case Kind::kSymbolicLink:
        return "link";
    default:
        return "other";
    }
}

std::string utc(const NS::RefPtr<NS::Date>& date) {
    const auto seconds = static_cast<std::time_t>(date ? date->timeIntervalSince1970() : 0);
    std::tm parts{};
    std::array<char, 32> text{};
    if (::gmtime_r(&seconds, &parts) == nullptr ||
        std::strftime(text.data(), text.size(), "%Y-%m-%dT%H:%M:%SZ", &parts) == 0) {
        return {};
    }
    return text.data();
}

} // namespace

nlohmann::ordered_json propertiesOf(const DriveEntry& entry) {
    const auto path = NS::String::fromFileSystemRepresentation(entry.systemPath());
    const auto attributes = NS::FileManager::defaultManager().attributesOfItemAtPath(path);
    if (!attributes) {
        throw Refusal("there is no such item");
    }
    const bool isFolder = attributes->kind == Kind::kDirectory;
    const FolderContents below =
        isFolder ? FolderContents::below(entry.folder.get(), entry.name) : FolderContents();
    nlohmann::ordered_json properties{
        {"kind",     nameOf(attributes->kind)                 },
        {"size",     isFolder ? below.bytes : attributes->size},
        {"created",  utc(attributes->creationDate)            },
        {"modified", utc(attributes->modificationDate)        }
    };
    if (isFolder) {
        properties["files"] = below.files;
        properties["folders"] = below.folders;
    }
    return properties;
}
