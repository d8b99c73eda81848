#include "CustomConsoleLogging/LoggingState.h"

#include <atomic>

namespace {

// Stays usable while the process ends: other threads may still log, and so may an exception.
LoggingState& ownState() {
    static LoggingState& state = *new LoggingState;
    return state;
}

std::atomic<LoggingState*> replacement{nullptr};

} // namespace

LoggingState& LoggingState::shared() noexcept {
    LoggingState* const state = replacement.load();
    return state != nullptr ? *state : ownState();
}

LoggingState* LoggingState::replace(LoggingState* state) noexcept {
    return replacement.exchange(state);
}
