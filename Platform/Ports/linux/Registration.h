#pragma once

#include "Platform/Ports/linux/Listener.h"
#include "Platform/Ports/linux/NameFile.h"

#include <cstddef>
#include <memory>
#include <string>

namespace NS {

// A name of a port of this process and the socket on which the port is found by it. Given up when
// this object goes, and when the process exits.
class Registration {
  public:
    // Null when a live process holds the name, or the name or the folder cannot be used.
    static std::unique_ptr<Registration> claim(const std::string& name, LocalEndpoint& owner);
    ~Registration();
    Registration(const Registration&) = delete;
    Registration& operator=(const Registration&) = delete;

    const std::string& name() const noexcept { return file_->name(); }
    const Ref<Listener>& listener() const noexcept { return listener_; }

    Registration(std::unique_ptr<NameFile> file, std::string socketName, Ref<Listener> listener);

  private:
    std::unique_ptr<NameFile> file_;
    std::string socketName_;
    Ref<Listener> listener_;
    std::size_t cleanupSlot_;
    pid_t process_; // a child of a fork has this object but not the name
};

} // namespace NS
