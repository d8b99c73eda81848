#include "QVApi/Content/QVEntryName.h"

#include <atomic>
#include <mutex>
#include <utility>

namespace {

std::atomic<std::uint64_t> renamingsSoFar{0};

// The readings that go on, as a list; a few at most.
std::mutex readingsLock;
QVEntryName::Reading* firstReading = nullptr;

} // namespace

QVEntryName::Reading::Reading() noexcept {
    const std::lock_guard lock(readingsLock);
    next_ = std::exchange(firstReading, this);
}

QVEntryName::Reading::~Reading() {
    const std::lock_guard lock(readingsLock);
    Reading** reading = &firstReading;
    while (*reading != this) {
        reading = &(*reading)->next_;
    }
    *reading = next_;
}

// A reading that is not in the list yet begins after the name was replaced, and does not see it.
void QVEntryName::keepForReadings(const NS::Ref<NS::Object>& replaced) {
    const std::lock_guard lock(readingsLock);
    for (Reading* reading = firstReading; reading != nullptr; reading = reading->next_) {
        reading->replaced_.push_back(replaced);
    }
}

std::uint64_t QVEntryName::renamings() noexcept {
    return renamingsSoFar.load(std::memory_order_acquire);
}

void QVEntryName::store(NS::RefPtr<NS::Object> name) noexcept {
    const NS::Object* const newName = name.get();
    noteReplaced(name_.exchange(std::move(name)), newName);
}

void QVEntryName::storeUnshared(NS::RefPtr<NS::Object> name) noexcept {
    const NS::Object* const newName = name.get();
    noteReplaced(name_.exchangeUnshared(std::move(name)), newName);
}

void QVEntryName::noteReplaced(const NS::RefPtr<NS::Object>& before,
                               const NS::Object* now) noexcept {
    if (before && before.get() != now) {
        renamingsSoFar.fetch_add(1, std::memory_order_release);
        keepForReadings(NS::Ref<NS::Object>(*before));
    }
}
