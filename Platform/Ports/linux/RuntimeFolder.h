#pragma once

#include "Platform/Ports/linux/FileDescriptor.h"

#include <optional>
#include <string>
#include <string_view>

#include <sys/socket.h>
#include <sys/un.h>

namespace NS {

// The user's private folder in which ports are found, opened and checked.
//
// $XDG_RUNTIME_DIR/Quorvane; where the variable is unset, /run/user/<uid>/Quorvane if that is this
// user's, else Quorvane/run in the user's state folder. Everything is reached through the open
// folder, so that nothing can be put in its place after the check, and paths may be as long as they
// are.
class RuntimeFolder {
  public:
    // Makes the folder when it is missing. Nothing when it cannot be made, or is no real folder of
    // this user with mode 0700.
    static std::optional<RuntimeFolder> open();
    // Where it is, for messages; also when open() refuses it.
    static std::string path();

    int descriptor() const noexcept { return folder_.get(); }
    // The address of a socket in the folder; the name is short.
    sockaddr_un address(std::string_view name) const noexcept;
    // Another descriptor of the same folder.
    FileDescriptor duplicate() const noexcept;

  private:
    explicit RuntimeFolder(FileDescriptor folder) noexcept : folder_(std::move(folder)) {}

    FileDescriptor folder_;
};

} // namespace NS
