#include "CustomConsoleLogging/Testing/ReportsFixture.h"

#include "Platform/Foundation/FileManager.h"

#include <fcntl.h>
#include <fstream>
#include <stdexcept>
#include <sys/stat.h>

namespace Tests {

namespace {

NS::Ref<NS::Date> creationDate(const std::filesystem::path& file) {
    const auto path = NS::String::fromFileSystemRepresentation(file.string());
    const auto attributes = NS::FileManager::defaultManager().attributesOfItemAtPath(*path);
    return NS::Ref<NS::Date>(*attributes.value().creationDate);
}

} // namespace

ReportsTest::ReportsTest() {
    std::filesystem::create_directories(reports());
    QVLogging::setupWithPrefix(NS::str("FE"));
}

void ReportsTest::put(const std::filesystem::path& file, std::string_view contents) {
    if (!(std::ofstream(file, std::ios::binary) << contents)) {
        throw std::runtime_error("cannot make " + file.string());
    }
}

void ReportsTest::modify(const std::filesystem::path& file, long seconds) {
    const timespec times[] = {
        {seconds, 0},
        {seconds, 0}
    };
    if (::utimensat(AT_FDCWD, file.c_str(), times, AT_SYMLINK_NOFOLLOW) != 0) {
        throw std::runtime_error("cannot date " + file.string());
    }
}

void ReportsTest::putAfter(const std::filesystem::path& earlier,
                           const std::filesystem::path& file) const {
    const auto before = creationDate(earlier);
    const std::filesystem::path probe = folders.root() / "probe";
    // The kernel stamps files by a clock that stands still for some milliseconds.
    const bool moved = waitUntil([&] {
        std::filesystem::remove(probe);
        put(probe);
        return creationDate(probe)->compare(*before) > 0;
    });
    if (!moved) {
        throw std::runtime_error("the file system's clock stands still");
    }
    put(file);
}

std::vector<std::string> ReportsTest::bytesOf(const NS::Array& paths) {
    std::vector<std::string> texts;
    for (const NS::Ref<NS::Object>& path : paths) {
        texts.push_back(bytesOf(NS::cast<NS::String>(path)));
    }
    return texts;
}

std::string ReportsTest::bytesOf(const NS::RefPtr<NS::String>& path) {
    return path ? path->fileSystemRepresentation() : "(nil)";
}

std::vector<std::string> ReportsTest::listed(const std::filesystem::path& folder) {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(folder)) {
        names.push_back(entry.path().filename());
    }
    return names;
}

} // namespace Tests
