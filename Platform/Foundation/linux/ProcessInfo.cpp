#include "Platform/Foundation/ProcessInfo.h"

#include "Platform/Foundation/Clock.h"
#include "Platform/Foundation/Exception.h"
#include "Platform/Foundation/Format.h"

#include <array>
#include <atomic>
#include <cerrno>
#include <sys/random.h>
#include <unistd.h>

namespace NS {

constinit const Class ProcessInfo::kClass{.name = "NSProcessInfo", .superclass = &Object::kClass};

namespace {

// So few bytes come whole or not at all.
std::array<std::uint64_t, 2> randomBits() {
    std::array<std::uint64_t, 2> bits{};
    while (::getrandom(bits.data(), sizeof bits, 0) != static_cast<ssize_t>(sizeof bits)) {
        if (errno != EINTR) {
            Exception::raise(kGenericException, "the system gives no random numbers");
        }
    }
    return bits;
}

} // namespace

Ref<ProcessInfo> ProcessInfo::processInfo() {
    static const Ref<ProcessInfo>& instance = *new Ref<ProcessInfo>(make<ProcessInfo>());
    return instance;
}

Ref<String> ProcessInfo::processName() const {
    return String::fromFileSystemRepresentation(::program_invocation_short_name);
}

std::int32_t ProcessInfo::processIdentifier() const {
    return ::getpid();
}

// The random part alone would do; process and count tell a reader which text is whose, and keep two
// texts of one machine apart should its random numbers repeat, as those of a cloned machine may.
Ref<String> ProcessInfo::globallyUniqueString() const {
    static std::atomic<std::uint32_t> calls{0};
    const auto [high, low] = randomBits();
    const auto seconds =
        static_cast<std::uint64_t>(static_cast<std::int64_t>(absoluteTimeGetCurrent())) &
        0xFFFFFFFFU;
    return stringWithFormat("%08llX-%04llX-%04llX-%04llX-%012llX-%d-%08llX%08X", high >> 32U,
                            (high >> 16U) & 0xFFFFU, high & 0xFFFFU, low >> 48U,
                            low & 0xFFFFFFFFFFFFU, processIdentifier(), seconds,
                            calls.fetch_add(1, std::memory_order_relaxed));
}

std::int32_t currentThreadIdentifier() noexcept {
    return ::gettid();
}

} // namespace NS
