// The least that a program costs which links what the extension links: it connects, says so, and
// rests.

#include "Benchmarks/linux/RawSocket.h"

#include <cstdlib>
#include <sys/socket.h>
#include <unistd.h>

int main() {
    const int host = Benchmarks::connectTo(std::filesystem::path(std::getenv("HOME")) / "bare");
    if (::send(host, "a", 1, MSG_NOSIGNAL) != 1) {
        return EXIT_FAILURE;
    }
    return ::pause();
}
