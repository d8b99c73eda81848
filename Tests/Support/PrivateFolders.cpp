#include "Tests/Support/PrivateFolders.h"

#include <cstdlib>
#include <stdexcept>
#include <sys/stat.h>

namespace Tests {

PrivateFolders::PrivateFolders() {
    std::string pattern =
        (std::filesystem::temp_directory_path() / "quorvane-test-XXXXXX").string();
    if (::mkdtemp(pattern.data()) == nullptr) {
        throw std::runtime_error("no temporary folder for the test");
    }
    root_ = pattern;
    setFolder("HOME", home());
    setFolder("XDG_RUNTIME_DIR", runtime());
    setFolder("XDG_DATA_HOME", data());
    setFolder("XDG_STATE_HOME", state());
    setFolder("XDG_CONFIG_HOME", config());
    set("DBUS_SESSION_BUS_ADDRESS", "unix:path=" + (runtime() / "bus").string());
}

PrivateFolders::~PrivateFolders() {
    for (const auto& [variable, value] : before_) {
        if (value) {
            ::setenv(variable.c_str(), value->c_str(), 1);
        } else {
            ::unsetenv(variable.c_str());
        }
    }
    std::error_code ignored; // a folder that stays behind must not hide the test's own result
    std::filesystem::remove_all(root_, ignored);
}

void PrivateFolders::setFolder(const char* variable, const std::filesystem::path& value) {
    std::filesystem::create_directories(value);
    ::chmod(value.c_str(), 0700);
    set(variable, value.string());
}

void PrivateFolders::set(const char* variable, const std::string& value) {
    const char* const before = std::getenv(variable);
    before_[variable] = before == nullptr ? std::nullopt : std::optional<std::string>(before);
    ::setenv(variable, value.c_str(), 1);
}

} // namespace Tests
