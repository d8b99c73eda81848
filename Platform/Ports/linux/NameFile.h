#pragma once

#include "Platform/Foundation/linux/FileDescriptor.h"
#include "Platform/Ports/linux/PortIdentity.h"
#include "Platform/Ports/linux/RuntimeFolder.h"

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <sys/types.h>

namespace NS {

// What the file of a name says: the socket to connect to, and the port behind it.
struct NameEntry {
    std::string socketName;
    PortIdentity port;

    std::string text() const;
    static std::optional<NameEntry> parse(std::string_view text);
    // The entry of a name in the folder; nothing when there is none, or none that can be read.
    static std::optional<NameEntry> read(const RuntimeFolder& folder, const std::string& name);
};

// A name held by this process: a file of the run-time folder that it keeps locked. The kernel lets
// go of the lock when the process dies, however it does; the file is then left for the next owner
// of the name, or for the next registration of any name, to take away. Given up when this object
// goes.
class NameFile {
  public:
    // Null when a live process holds the name, or when it cannot be a name. Never waits for one
    // who holds it; for one who is just tidying up, some seconds at the most. The socket of a dead
    // owner is taken away.
    static std::unique_ptr<NameFile> claim(RuntimeFolder folder, const std::string& name);
    ~NameFile();
    NameFile(const NameFile&) = delete;
    NameFile& operator=(const NameFile&) = delete;

    const std::string& name() const noexcept { return name_; }
    const RuntimeFolder& folder() const noexcept { return folder_; }
    int descriptor() const noexcept { return locked_.get(); }
    // What look-ups find from now on. False when it cannot be written.
    bool write(const NameEntry& entry) const;

    // Takes away the names and sockets that dead processes left in the folder.
    static void sweep(const RuntimeFolder& folder);

    NameFile(RuntimeFolder folder, std::string name, FileDescriptor locked);

  private:
    RuntimeFolder folder_;
    std::string name_;
    FileDescriptor locked_;
    pid_t process_; // a child of a fork has this object but not the name
};

} // namespace NS
