#pragma once

#include "CustomConsoleLogging/LogFile.h"
#include "CustomConsoleLogging/consoleLogging.h"
#include "Platform/Foundation/DateFormatter.h"
#include "Platform/Foundation/Property.h"

// All that logging keeps for the life of the process.
struct LoggingState {
    NS::AtomicRef<QVLogging> instance;
    NS::DateFormatter coarse{"yyyy-MM-dd HH:mm:ss"};
    LogFile file;
    LogFile succinctFile;

    static LoggingState& shared();
    // Starts afresh, as a new process would. For tests.
    static void reset();
};
