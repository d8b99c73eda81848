#pragma once

#include "Platform/Foundation/String.h"

#include <cstdint>

namespace NS {

enum class SearchPathDirectory : std::uint8_t { kApplicationSupport, kLibrary };
enum class SearchPathDomain : std::uint8_t { kUser, kLocal };

// Where things of a kind are kept: the user's own, or the machine's. An absolute path; the folder
// need not exist. Looked up afresh at each call. Any thread, as long as none changes the
// environment.
Ref<String> searchPathForDirectoryInDomain(SearchPathDirectory directory, SearchPathDomain domain);

// Where the user's property lists of defaults are kept.
Ref<String> preferencesDirectory();

// The user's home folder.
Ref<String> homeDirectory();

} // namespace NS
