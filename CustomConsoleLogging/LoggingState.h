#pragma once

#include "CustomConsoleLogging/LogFile.h"
#include "CustomConsoleLogging/QVLogging.h"
#include "Platform/Foundation/Property.h"

// All that logging keeps for the life of the process.
struct LoggingState {
    NS::AtomicRef<QVLogging> instance;
    LogFile file;         // what fileMessage_succinct() writes
    LogFile succinctFile; // what fileSuccinctMessage() writes

    static LoggingState& shared() noexcept;
    // Puts a state in place, null for the process's own, and returns the one before it.
    static LoggingState* replace(LoggingState* state) noexcept;
};

// Lets the process begin as if it had never logged, for as long as it lives. For tests.
class ScopedLoggingState {
  public:
    ScopedLoggingState() noexcept : previous_(LoggingState::replace(&state_)) {}
    ~ScopedLoggingState() { LoggingState::replace(previous_); }
    ScopedLoggingState(const ScopedLoggingState&) = delete;
    ScopedLoggingState& operator=(const ScopedLoggingState&) = delete;

  private:
    LoggingState state_;
    LoggingState* previous_;
};
