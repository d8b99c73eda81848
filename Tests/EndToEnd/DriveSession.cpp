#include "Tests/EndToEnd/DriveSession.h"

#include <algorithm>
#include <fstream>
#include <sstream>

namespace fs = std::filesystem;

namespace Tests {

void DriveSession::startHost() {
    host.emplace(HOST_PROGRAM, std::vector<std::string>{"--drive", drive.string()},
                 folders.root() / "host.out", folders.root() / "host.err");
}

void DriveSession::startExtensionAlone() {
    extension.emplace(EXTENSION_PROGRAM, std::vector<std::string>(),
                      folders.root() / "extension.out", folders.root() / "extension.err");
    ASSERT_TRUE(waitUntil([&] { return finder({"status"}).status == 0; }))
        << extension->errors() << host->errors();
}

void DriveSession::start() {
    startHost();
    startExtensionAlone();
    // The record that it asked for comes after the mount path.
    ASSERT_TRUE(logShows("received info <QVUserInfoItem"));
}

Finished DriveSession::finder(const std::vector<std::string>& arguments, std::string_view input) {
    const std::string run = "finder" + std::to_string(++runs_);
    const fs::path in = folders.root() / (run + ".in");
    const fs::path out = folders.root() / (run + ".out");
    const fs::path err = folders.root() / (run + ".err");
    std::ofstream(in, std::ios::binary) << input;
    std::vector<std::string> command{
        "-c",        R"(cd "$1" && exec 0<"$2" && shift 2 && exec "$@")",
        "sh",        drive.string(),
        in.string(), FINDER_PROGRAM};
    command.insert(command.end(), arguments.begin(), arguments.end());
    Process process("/bin/sh", command, out, err);
    const int status = process.waitForExit().value_or(-1);
    return {status, process.output(), process.errors()};
}

std::string DriveSession::answer(const std::vector<std::string>& arguments,
                                 std::string_view input) {
    const Finished finished = finder(arguments, input);
    EXPECT_EQ(finished.status, 0) << finished.errors;
    EXPECT_EQ(finished.errors, "");
    return finished.output;
}

std::vector<std::string> DriveSession::titles(std::vector<std::string> arguments,
                                              std::string_view input) {
    arguments.insert(arguments.begin(), {"menu", "--json"});
    const auto menu = nlohmann::json::parse(answer(arguments, input), nullptr, false);
    std::vector<std::string> titles;
    if (menu.is_discarded()) {
        return {"no JSON"};
    }
    EXPECT_EQ(menu["title"], "Fennmoor Cloud");
    for (const auto& item : menu["items"]) {
        const auto title = item["title"].get<std::string>();
        titles.push_back(item["enabled"].get<bool>() ? title : "[" + title + "]");
    }
    return titles;
}

std::string DriveSession::makeFile(const std::string& path, std::string_view contents) const {
    const fs::path file = drive / path;
    fs::create_directories(file.parent_path());
    std::ofstream(file, std::ios::binary) << contents;
    return file.string();
}

bool DriveSession::isOnDrive(const std::string& path) const {
    return fs::symlink_status(drive / path).type() != fs::file_type::not_found;
}

bool DriveSession::isOnDriveSoon(const std::string& path, std::chrono::milliseconds limit) const {
    return waitUntil([&] { return isOnDrive(path); }, limit);
}

bool DriveSession::isGoneSoon(const std::string& path) const {
    return waitUntil([&] { return !isOnDrive(path); });
}

std::vector<nlohmann::json> DriveSession::journal() const {
    std::vector<nlohmann::json> entries;
    std::istringstream lines(host->output());
    for (std::string line; std::getline(lines, line);) {
        auto entry = nlohmann::json::parse(line, nullptr, false);
        if (entry.is_object()) {
            entries.push_back(std::move(entry));
        }
    }
    return entries;
}

std::vector<nlohmann::json> DriveSession::requests() const {
    auto entries = journal();
    std::erase_if(entries, [](const auto& entry) { return !entry.contains("action"); });
    return entries;
}

std::vector<nlohmann::json> DriveSession::requestsSoon(std::string_view action,
                                                       std::size_t count) const {
    std::vector<nlohmann::json> found;
    (void)waitUntil([&] {
        found = requests();
        std::erase_if(found, [&](const auto& request) { return request["action"] != action; });
        return found.size() >= count;
    });
    return found;
}

} // namespace Tests
