#include "Programs/QuorvaneHost/ItemProperties.h"

#include "Platform/Foundation/Date.h"
#include "Platform/Foundation/FileManager.h"

#include <array>
#include <cstdint>
#include <ctime>
#include <filesystem>
#include <system_error>

namespace fs = std::filesystem;
using Kind = NS::FileAttributes::Kind;

namespace {

struct Contents {
    std::uint64_t bytes = 0;
    std::uint64_t files = 0;
    std::uint64_t folders = 0;
};

void count(const fs::directory_entry& entry, Contents& contents) {
    std::error_code error;
    const fs::file_type type = entry.symlink_status(error).type();
    if (type == fs::file_type::directory) {
        ++contents.folders;
        return;
    }
    ++contents.files;
    const std::uintmax_t size = type == fs::file_type::regular ? entry.file_size(error) : 0;
    contents.bytes += error ? 0 : size;
}

// What cannot be read counts nothing.
Contents contentsBelow(const std::string& folder) {
    Contents contents;
    std::error_code error;
    fs::recursive_directory_iterator entry(folder, fs::directory_options::skip_permission_denied,
                                           error);
    while (!error && entry != fs::recursive_directory_iterator()) {
        count(*entry, contents);
        entry.increment(error);
    }
    return contents;
}

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
    const Contents below = isFolder ? contentsBelow(entry.systemPath()) : Contents();
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
