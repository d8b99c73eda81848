#pragma once

#include "Platform/Foundation/linux/FileDescriptor.h"

#include <optional>
#include <string>
#include <string_view>
#include <sys/socket.h>
#include <sys/un.h>
#include <utility>

namespace NS {

// True while the open file is the one of that name in the folder. May be called by a signal
// handler.
bool isNamed(int folder, const char* name, int file) noexcept;

// The user's private folder in which ports are found, opened and checked.
//
// $XDG_RUNTIME_DIR/Quorvane; where the variable is unset, /run/user/<uid>/Quorvane if that is this
// user's, else Quorvane/run in the user's state folder. Everything is reached through the open
// folder, so that nothing can be put in its place after the check, and its path may be as long as
// it likes, although a socket's address holds 108 bytes.
class RuntimeFolder {
  public:
    // Nothing when the folder is missing, or is no real folder of this user with mode 0700.
    static std::optional<RuntimeFolder> open();
    // The same, but makes the folder when it is missing.
    static std::optional<RuntimeFolder> openOrMake();
    // Where it is, for messages; also when open() refuses it.
    static std::string path();

    int descriptor() const noexcept { return folder_.get(); }
    // The address of a socket in the folder; the name is short.
    sockaddr_un address(std::string_view name) const noexcept;
    // Another descriptor of the same folder.
    FileDescriptor duplicate() const noexcept;
    // Takes an entry away; one that is not there is as good.
    void unlink(const std::string& name) const noexcept;

  private:
    explicit RuntimeFolder(FileDescriptor folder) noexcept : folder_(std::move(folder)) {}
    static std::optional<RuntimeFolder> openAt(const std::string& path);

    FileDescriptor folder_;
};

} // namespace NS
