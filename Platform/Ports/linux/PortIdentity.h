#pragma once

#include <array>
#include <cstddef>
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
    friend bool operator==(const PortIdentity&, const PortIdentity&) = default;
};

} // namespace NS
