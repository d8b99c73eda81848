#pragma once

#include <cstddef>
#include <filesystem>

// Bare packet sockets, for floors. All raise std::system_error where the system refuses.
namespace Benchmarks {

// What a message of a port's two small components takes as a packet.
inline constexpr std::size_t kRawLength = 40 + 2 * 8 + 10 + 250;

int listenAt(const std::filesystem::path& path);
int acceptFrom(int listener);
int connectTo(const std::filesystem::path& path);
// With the send buffer that a port asks for.
void raiseSendBuffer(int socket);
int makeEpoll();
void watch(int epoll, int socket);
// The next socket that has something.
int waitFor(int epoll);

[[noreturn]] void failSystem(const char* what);

} // namespace Benchmarks
