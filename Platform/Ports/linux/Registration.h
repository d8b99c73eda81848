#pragma once

#include "Platform/Ports/linux/FileDescriptor.h"
#include "Platform/Ports/linux/Listener.h"
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

// A name held by a port of this process. The name is a file of the run-time folder that the owner's
// process keeps locked: the kernel lets go of the lock when the process dies, however it does.
// Given up when this object goes, and when the process exits.
class Registration {
  public:
    // Null when a live process holds the name, or the name or the folder cannot be used.
    static std::unique_ptr<Registration> claim(const std::string& name, LocalEndpoint& owner);
    ~Registration();
    Registration(const Registration&) = delete;
    Registration& operator=(const Registration&) = delete;

    const std::string& name() const noexcept { return name_; }
    const Ref<Listener>& listener() const noexcept { return listener_; }

    Registration(std::string name, std::string socketName, RuntimeFolder folder,
                 FileDescriptor lock, Ref<Listener> listener);

  private:
    std::string name_;
    std::string socketName_;
    RuntimeFolder folder_;
    FileDescriptor lock_;
    Ref<Listener> listener_;
    std::size_t cleanupSlot_;
    pid_t process_; // a child of a fork has this object but not the name
};

} // namespace NS
