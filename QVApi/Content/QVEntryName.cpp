#include "QVApi/Content/QVEntryName.h"

#include <atomic>
#include <utility>

namespace {

std::atomic<std::uint64_t> renamingsSoFar{0};

} // namespace

std::uint64_t QVEntryName::renamings() noexcept {
    return renamingsSoFar.load(std::memory_order_acquire);
}

void QVEntryName::store(NS::RefPtr<NS::Object> name) noexcept {
    const NS::Object* const newName = name.get();
    const auto before = name_.exchange(std::move(name));
    if (before && before.get() != newName) {
        renamingsSoFar.fetch_add(1, std::memory_order_release);
    }
}
