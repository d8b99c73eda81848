#include "Benchmarks/Support/ScratchFolder.h"

#include <cstdlib>
#include <string>

namespace Benchmarks {

namespace {

constexpr const char* kVariables[] = {
    "HOME", "XDG_CONFIG_HOME", "XDG_DATA_HOME", "XDG_STATE_HOME", "XDG_RUNTIME_DIR",
};

} // namespace

ScratchFolder::ScratchFolder() {
    const std::string name = path();
    for (const char* const variable : kVariables) {
        (void)::setenv(variable, name.c_str(), 1); // fails only for names that are none
    }
    (void)::setenv("DBUS_SESSION_BUS_ADDRESS", ("unix:path=" + name + "/bus").c_str(), 1);
}

} // namespace Benchmarks
