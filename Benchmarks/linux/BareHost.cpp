#include "Benchmarks/linux/BareHost.h"

#include "Benchmarks/linux/RawSocket.h"

#include <cstdlib>
#include <sys/socket.h>
#include <unistd.h>

namespace Benchmarks {

namespace {

std::filesystem::path socketPath() {
    return std::filesystem::path(std::getenv("HOME")) / "bare";
}

} // namespace

BareHost::BareHost() : listener_(listenAt(socketPath())) {}

BareHost::~BareHost() {
    (void)::close(program_);
    (void)::close(listener_);
    (void)::unlink(socketPath().c_str());
}

void BareHost::awaitProgram() {
    program_ = acceptFrom(listener_);
    char announced = 0;
    if (::recv(program_, &announced, 1, 0) != 1) {
        failSystem("recv");
    }
}

} // namespace Benchmarks
