#pragma once

#include "FileManagers/GLib/Owned.h"

#include <string>

#include <gio/gio.h>

namespace FileManagers {

// The path of the folder that the files of a selection are in. File managers tell it with each of
// thousands of files, mostly by the same object, which is looked at once.
class FolderPath {
  public:
    // The path of a file by its folder and its name in it; empty when the folder is none of this
    // machine.
    std::string of(OwnedObject<GFile> folder, const char* name);

  private:
    OwnedObject<GFile> folder_;
    std::string start_; // with a slash at its end
};

} // namespace FileManagers
