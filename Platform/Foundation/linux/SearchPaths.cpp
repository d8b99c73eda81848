#include "Platform/Foundation/SearchPaths.h"

#include <cerrno>
#include <cstdlib>
#include <pwd.h>
#include <string>
#include <unistd.h>
#include <vector>

namespace NS {

namespace {

// A folder named by an environment variable, which counts only when it is absolute (XDG Base
// Directory rules); else one below the home folder.
Ref<String> baseDirectory(const char* variable, const char* belowHome) {
    const char* const value = std::getenv(variable);
    if (value != nullptr && value[0] == '/') {
        return String::fromFileSystemRepresentation(value);
    }
    return homeDirectory()->stringByAppendingPathComponent(*str(belowHome));
}

std::string homeInPasswordDatabase() {
    std::vector<char> buffer(4096);
    passwd entry{};
    passwd* found = nullptr;
    while (::getpwuid_r(::getuid(), &entry, buffer.data(), buffer.size(), &found) == ERANGE &&
           buffer.size() < (std::size_t{1} << 20U)) {
        buffer.resize(buffer.size() * 2);
    }
    return found != nullptr && found->pw_dir != nullptr ? found->pw_dir : "/";
}

} // namespace

Ref<String> homeDirectory() {
    const char* const home = std::getenv("HOME");
    if (home != nullptr && home[0] == '/') {
        return String::fromFileSystemRepresentation(home);
    }
    return String::fromFileSystemRepresentation(homeInPasswordDatabase());
}

Ref<String> searchPathForDirectoryInDomain(SearchPathDirectory directory, SearchPathDomain domain) {
    if (directory == SearchPathDirectory::kApplicationSupport) {
        return domain == SearchPathDomain::kUser ? baseDirectory("XDG_DATA_HOME", ".local/share")
                                                 : str("/Library/Application Support");
    }
    return domain == SearchPathDomain::kUser ? baseDirectory("XDG_STATE_HOME", ".local/state")
                                             : str("/Library");
}

Ref<String> preferencesDirectory() {
    return baseDirectory("XDG_CONFIG_HOME", ".config")
        ->stringByAppendingPathComponent(*str("Quorvane"));
}

} // namespace NS
