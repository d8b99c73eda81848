#include "Platform/Ports/PortDrops.h"

#include <array>
#include <atomic>
#include <utility>

namespace NS {

namespace {

std::array<std::atomic<std::uint64_t>, kPortDropReasons> counts{};

std::function<void(PortDrop)>& observer() {
    static auto& instance = *new std::function<void(PortDrop)>();
    return instance;
}

} // namespace

std::uint64_t portDropCount(PortDrop reason) noexcept {
    return counts[static_cast<std::size_t>(reason)].load(std::memory_order_relaxed);
}

void setPortDropObserver(std::function<void(PortDrop)> replacement) {
    observer() = std::move(replacement);
}

void notePortDrop(PortDrop reason) {
    counts[static_cast<std::size_t>(reason)].fetch_add(1, std::memory_order_relaxed);
    if (observer()) {
        observer()(reason);
    }
}

} // namespace NS
