#include "Platform/Foundation/ProcessInfo.h"

#include "Platform/Foundation/Clock.h"
#include "Platform/Foundation/Exception.h"
#include "Platform/Foundation/Format.h"

#include <array>
#include <atomic>
#include <cerrno>
#include <cstdint>
#include <sys/random.h>
#include <unistd.h>

namespace NS {

constinit const Class ProcessInfo::kClass{.name = "NSProcessInfo", .superclass = &Object::kClass};

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

Ref<String> ProcessInfo::globallyUniqueString() const {
    static std::atomic<std::uint32_t> calls{0};
    std::array<std::uint64_t, 2> random{};
    // So few bytes come whole.
    if (::getrandom(random.data(), sizeof random, 0) != static_cast<ssize_t>(sizeof random)) {
        Exception::raise(kGenericException, "the kernel gives no random numbers");
    }
    const auto time = static_cast<std::uint64_t>(absoluteTimeGetCurrent());
    return stringWithFormat("%08llX-%04llX-%04llX-%04llX-%012llX-%d-%08X%08llX", random[0] >> 32U,
                            random[0] >> 16U & 0xFFFFU, random[0] & 0xFFFFU, random[1] >> 48U,
                            random[1] & 0xFFFFFFFFFFFFU, processIdentifier(), calls++,
                            time & 0xFFFFFFFFU);
}

std::int32_t currentThreadIdentifier() {
    return ::gettid();
}

} // namespace NS
