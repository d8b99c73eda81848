#pragma once

#include <string_view>

namespace NS {

// The name of an operation, colons included. Two selectors are the same when their texts are:
// "restore" and "restore:" are two. Refers to text that outlives it, normally a literal.
struct Selector {
    std::string_view name;

    // How many arguments the operation takes: one for each colon.
    constexpr std::size_t argumentCount() const noexcept {
        std::size_t count = 0;
        for (const char c : name) {
            count += c == ':' ? 1 : 0;
        }
        return count;
    }

    friend constexpr bool operator==(Selector a, Selector b) noexcept = default;
};

} // namespace NS
