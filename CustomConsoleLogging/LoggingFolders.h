#pragma once

#include "Platform/Foundation/String.h"

#include <string_view>
#include <vector>

// Where logs and reports lie. Looked up afresh at each call; no folder need exist.

// The user's logging folder, with a slash at its end: what a setup takes.
NS::Ref<NS::String> userLoggingFolder();
// The logging folder of the shared instance; nil before the setup.
NS::RefPtr<NS::String> ownLoggingFolder();
// The extension's logging folder as its container shows it to the user's other processes.
NS::Ref<NS::String> containedLoggingFolder();

// Joins with one slash.
NS::Ref<NS::String> pathBelow(const NS::String& folder, std::string_view component);

// The names in a folder, in the file system's order; none where it is nil or cannot be read.
std::vector<NS::Ref<NS::String>> namesIn(const NS::RefPtr<NS::String>& folder);
