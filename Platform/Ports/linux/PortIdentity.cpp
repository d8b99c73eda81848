#include "Platform/Ports/linux/PortIdentity.h"

#include "Platform/Foundation/Exception.h"

#include <charconv>
#include <sys/random.h>

namespace NS {

PortIdentity PortIdentity::random() {
    PortIdentity identity;
    // So few bytes are never cut short and never interrupted once the pool is ready.
    if (::getrandom(identity.bytes.data(), identity.bytes.size(), 0) !=
        static_cast<ssize_t>(identity.bytes.size())) {
        Exception::raise(kGenericException, "the kernel gives no random numbers");
    }
    return identity;
}

std::optional<PortIdentity> PortIdentity::fromHex(std::string_view text) noexcept {
    PortIdentity identity;
    if (text.size() != identity.bytes.size() * 2) {
        return std::nullopt;
    }
    for (std::size_t i = 0; i < identity.bytes.size(); ++i) {
        const char* const digits = text.data() + i * 2;
        unsigned value = 0;
        const auto [end, error] = std::from_chars(digits, digits + 2, value, 16);
        if (error != std::errc() || end != digits + 2) {
            return std::nullopt;
        }
        identity.bytes[i] = static_cast<std::byte>(value);
    }
    return identity;
}

std::string PortIdentity::hex() const {
    constexpr std::string_view kDigits = "0123456789abcdef";
    std::string text;
    for (const std::byte byte : bytes) {
        text.push_back(kDigits[std::to_integer<std::size_t>(byte >> 4)]);
        text.push_back(kDigits[std::to_integer<std::size_t>(byte & std::byte{0xF})]);
    }
    return text;
}

} // namespace NS
