#pragma once

#include <array>
#include <cstddef>
#include <cstring>
#include <optional>
#include <string>
#include <string_view>

namespace NS {

// 128 random bits that tell one port from every other. All zero: no port.
struct PortIdentity {
    std::array<std::byte, 16> bytes{};

    // A fresh one, from the kernel's random numbers.
    static PortIdentity random();
    // From 32 lower-case hexadecimal digits, or nothing.
    static std::optional<PortIdentity> fromHex(std::string_view text) noexcept;

    std::string hex() const;
    bool isNone() const noexcept { return *this == PortIdentity{}; }
    // Asked with each message; a comparison by default goes byte by byte.
    friend bool operator==(const PortIdentity& a, const PortIdentity& b) noexcept {
        return std::memcmp(a.bytes.data(), b.bytes.data(), sizeof a.bytes) == 0;
    }
};

} // namespace NS
