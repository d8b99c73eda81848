#include "Benchmarks/Support/ScratchFolder.h"

#include <cerrno>
#include <cstdlib>
#include <string>
#include <string_view>
#include <system_error>

namespace Benchmarks {

namespace {

constexpr const char* kVariables[] = {
    "HOME", "XDG_CONFIG_HOME", "XDG_DATA_HOME", "XDG_STATE_HOME", "XDG_RUNTIME_DIR",
};

// Where a session's run-time folder is too: a disk would add its own time.
constexpr std::string_view kInMemory = "/dev/shm";

} // namespace

ScratchFolder::ScratchFolder() {
    std::string name = std::string(kInMemory) + "/quorvane-XXXXXX";
    if (::mkdtemp(name.data()) == nullptr) {
        throw std::system_error(errno, std::generic_category(), name);
    }
    path_ = name;
    for (const char* const variable : kVariables) {
        (void)::setenv(variable, name.c_str(), 1); // fails only for names that are none
    }
    (void)::setenv("DBUS_SESSION_BUS_ADDRESS", ("unix:path=" + name + "/bus").c_str(), 1);
}

ScratchFolder::~ScratchFolder() {
    std::error_code ignored; // what is left of it is in the temporary folder
    std::filesystem::remove_all(path_, ignored);
}

} // namespace Benchmarks
