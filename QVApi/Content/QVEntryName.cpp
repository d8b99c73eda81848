#include "QVApi/Content/QVEntryName.h"

#include <atomic>
#include <utility>

namespace {

std::atomic<std::uint64_t> renamingsSoFar{0};

void countIfRenamed(const NS::RefPtr<NS::Object>& before, const NS::Object* name) noexcept {
    if (before && before.get() != name) {
        renamingsSoFar.fetch_add(1, std::memory_order_release);
    }
}

} // namespace

std::uint64_t QVEntryName::renamings() noexcept {
    return renamingsSoFar.load(std::memory_order_acquire);
}

void QVEntryName::store(NS::RefPtr<NS::Object> name) noexcept {
    const NS::Object* const newName = name.get();
    countIfRenamed(name_.exchange(std::move(name)), newName);
}

void QVEntryName::storeUnshared(NS::RefPtr<NS::Object> name) noexcept {
    const NS::Object* const newName = name.get();
    countIfRenamed(name_.exchangeUnshared(std::move(name)), newName);
}
