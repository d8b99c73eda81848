#include "Platform/Ports/linux/Registration.h"

#include "Platform/Ports/linux/Endpoints.h"
#include "Platform/Ports/linux/ExitCleanup.h"

#include <unistd.h>

namespace NS {

std::unique_ptr<Registration> Registration::claim(const std::string& name, LocalEndpoint& owner) {
    std::optional<RuntimeFolder> folder = RuntimeFolder::openOrMake();
    if (!folder) {
        return nullptr;
    }
    NameFile::sweep(*folder);
    std::unique_ptr<NameFile> file = NameFile::claim(std::move(*folder), name);
    const NameEntry entry{PortIdentity::random().hex(), owner.identity()};
    // The name's file speaks of the socket before there is one, so that whenever this process dies,
    // no socket is left that no file tells of. Until it listens, a look-up finds nobody.
    if (!file || !file->write(entry)) {
        return nullptr;
    }
    const RefPtr<Listener> listener = Listener::listenOn(file->folder(), entry.socketName, owner);
    return listener ? std::make_unique<Registration>(std::move(file), entry.socketName,
                                                     Ref<Listener>(*listener))
                    : nullptr;
}

Registration::Registration(std::unique_ptr<NameFile> file, std::string socketName,
                           Ref<Listener> listener)
    : file_(std::move(file)), socketName_(std::move(socketName)), listener_(std::move(listener)),
      cleanupSlot_(ExitCleanup::add(*file_, socketName_)), process_(::getpid()) {}

Registration::~Registration() {
    listener_->forgetOwner();
    if (process_ == ::getpid()) {
        ExitCleanup::remove(cleanupSlot_);
        file_->folder().unlink(socketName_);
    }
}

} // namespace NS
