#include "Benchmarks/Support/Peer.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <fstream>
#include <spawn.h>
#include <stdexcept>
#include <string>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <system_error>
#include <unistd.h>
#include <utility>

namespace Benchmarks {

namespace {

// The descriptor on which the other side hears orders and says that it is ready.
constexpr int kOrders = 3;

[[noreturn]] void fail(const char* what) {
    throw std::system_error(errno, std::generic_category(), what);
}

// With the socket, if there is one, as kOrders.
pid_t spawn(const std::filesystem::path& program, const std::vector<std::string>& arguments,
            int orders) {
    std::vector<char*> argv{const_cast<char*>(program.c_str())};
    for (const std::string& argument : arguments) {
        argv.push_back(const_cast<char*>(argument.c_str()));
    }
    argv.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    (void)::posix_spawn_file_actions_init(&actions);
    if (orders >= 0) {
        (void)::posix_spawn_file_actions_adddup2(&actions, orders, kOrders);
    }
    pid_t process = -1;
    errno = ::posix_spawn(&process, program.c_str(), &actions, nullptr, argv.data(), environ);
    (void)::posix_spawn_file_actions_destroy(&actions);
    if (errno != 0) {
        fail(program.c_str());
    }
    return process;
}

} // namespace

int startProgram(const std::filesystem::path& program, const std::vector<std::string>& arguments) {
    return spawn(program, arguments, -1);
}

void endProgram(int process) {
    (void)::kill(process, SIGTERM); // it may have ended
    (void)::waitpid(process, nullptr, 0);
}

std::size_t residentBytesOf(int process) {
    std::ifstream file("/proc/" + std::to_string(process) + "/statm");
    std::size_t size = 0;
    std::size_t resident = 0;
    file >> size >> resident;
    return resident * static_cast<std::size_t>(::sysconf(_SC_PAGESIZE));
}

Peer::Peer(const std::filesystem::path& program, const std::vector<std::string>& arguments) {
    std::array<int, 2> ends{};
    if (::socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends.data()) != 0) {
        fail("socketpair");
    }
    orders_ = ends[0];
    pid_ = spawn(program, arguments, ends[1]);
    (void)::close(ends[1]);
    awaitReady();
}

Peer::~Peer() {
    kill();
    (void)::close(orders_);
}

std::filesystem::path Peer::ownProgram() {
    return std::filesystem::read_symlink("/proc/self/exe");
}

void Peer::sayReady() {
    (void)::prctl(PR_SET_PDEATHSIG, SIGKILL);
    (void)::send(kOrders, "r", 1, MSG_NOSIGNAL); // its maker may be gone already
}

bool Peer::awaitOrder() {
    char order = 0;
    return ::recv(kOrders, &order, 1, 0) == 1;
}

void Peer::order() {
    (void)::send(orders_, "o", 1, MSG_NOSIGNAL); // an end is noticed in the next line
    awaitReady();
}

void Peer::awaitReady() {
    char ready = 0;
    if (::recv(orders_, &ready, 1, 0) != 1) {
        throw std::runtime_error("the other side ended");
    }
}

void Peer::kill() {
    if (pid_ >= 0) {
        sendKill();
        (void)::waitpid(std::exchange(pid_, -1), nullptr, 0);
    }
}

void Peer::sendKill() const {
    (void)::kill(pid_, SIGKILL); // it is there, or waited for
}

std::size_t Peer::residentBytes() const {
    return residentBytesOf(pid_);
}

} // namespace Benchmarks
