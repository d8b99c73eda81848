#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <map>
#include <optional>
#include <string>

namespace Tests {

// Gives the process a home and a run-time folder of its own, and takes them away at the end. The
// session bus's address lies in the latter: the user's own bus is out of reach.
class PrivateFolders {
  public:
    PrivateFolders();
    ~PrivateFolders();
    PrivateFolders(const PrivateFolders&) = delete;
    PrivateFolders& operator=(const PrivateFolders&) = delete;

    const std::filesystem::path& root() const { return root_; }
    std::filesystem::path home() const { return root_ / "home"; }
    std::filesystem::path runtime() const { return root_ / "run"; }
    std::filesystem::path data() const { return root_ / "data"; }
    std::filesystem::path state() const { return root_ / "state"; }
    std::filesystem::path config() const { return root_ / "config"; }

  private:
    void setFolder(const char* variable, const std::filesystem::path& value);
    void set(const char* variable, const std::string& value);

    std::filesystem::path root_;
    std::map<std::string, std::optional<std::string>> before_;
};

// A test with private folders: HOME, XDG_RUNTIME_DIR, XDG_DATA_HOME, XDG_STATE_HOME,
// XDG_CONFIG_HOME. Without a session bus; SessionBus starts one.
class FolderTest : public testing::Test {
  protected:
    PrivateFolders folders;
};

} // namespace Tests
