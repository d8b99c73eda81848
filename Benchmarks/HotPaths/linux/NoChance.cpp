// Takes the place of what the system gives of chance: tables whose hashes are keyed anew in each
// process, and names that are drawn, would count otherwise each time.

#include <cstddef>
#include <cstring>
#include <random>
#include <sys/random.h>

extern "C" ssize_t getrandom(void* buffer, std::size_t length, unsigned) noexcept {
    static unsigned char next = 0;
    std::memset(buffer, ++next, length);
    return static_cast<ssize_t>(length);
}

std::random_device::result_type std::random_device::_M_getval() {
    return 0x9E3779B9;
}
