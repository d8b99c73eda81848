#pragma once

#include "Programs/QuorvaneHost/DriveTree.h"

#include <nlohmann/json.hpp>

// What a person is told of an item, as members of a journal line: "kind" ("file", "folder", "link"
// or "other"), "size" in bytes (of a folder: all regular files below it), "created" and "modified"
// in UTC, and for a folder how many "files" and "folders" are below it. Symbolic links are not
// followed. Throws Refusal when there is no such item.
nlohmann::ordered_json propertiesOf(const DriveEntry& entry);
