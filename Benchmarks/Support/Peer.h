#pragma once

#include <cstddef>
#include <filesystem>
#include <string>
#include <vector>

namespace Benchmarks {

// Another process that a benchmark exchanges messages with. Killed when this object goes, and, once
// it has called sayReady(), when its maker dies.
class Peer {
  public:
    // Starts a program and returns when it has said that it is ready. Throws when it ends instead.
    Peer(const std::filesystem::path& program, const std::vector<std::string>& arguments);
    ~Peer();
    Peer(const Peer&) = delete;
    Peer& operator=(const Peer&) = delete;

    // This very program, told by its first argument, kPeerOption, to be the other side.
    static std::filesystem::path ownProgram();
    // Called by the other side: its maker goes on.
    static void sayReady();
    // Called by the other side: waits for the next order of its maker; false when there is none.
    static bool awaitOrder();
    // Has the other side carry out what it does for an order, and waits until it is ready again.
    void order();

    int process() const noexcept { return pid_; }
    void kill();
    // Does not wait for its end.
    void sendKill() const;
    // Bytes of memory that it has now.
    std::size_t residentBytes() const;

  private:
    void awaitReady();

    int pid_ = -1;
    int orders_ = -1;
};

inline constexpr const char* kPeerOption = "--peer";

// Starts a program without waiting for anything; the number of its process.
int startProgram(const std::filesystem::path& program, const std::vector<std::string>& arguments);
// Has a process that startProgram() made end as a session's end does, and waits for it.
void endProgram(int process);
std::size_t residentBytesOf(int process);

} // namespace Benchmarks
