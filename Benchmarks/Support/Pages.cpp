#include "Benchmarks/Support/Pages.h"

#include <stdexcept>

namespace Benchmarks {

namespace {

constexpr std::size_t kPage = 4096;

} // namespace

void fillPages(std::span<std::byte> bytes) {
    for (std::size_t i = 0; i < bytes.size(); i += kPage) {
        bytes[i] = static_cast<std::byte>(i / kPage);
    }
}

void readPages(NS::Bytes bytes) {
    for (std::size_t i = 0; i < bytes.size(); i += kPage) {
        if (bytes[i] != static_cast<std::byte>(i / kPage)) {
            throw std::runtime_error("a payload came that nobody sent");
        }
    }
}

} // namespace Benchmarks
