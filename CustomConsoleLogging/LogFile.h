#pragma once

#include "Platform/Foundation/ByteBuffer.h"
#include "Platform/Foundation/DateStamp.h"
#include "Platform/Foundation/FileAppender.h"
#include "Platform/Foundation/Property.h"
#include "Platform/Foundation/String.h"

#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <string_view>

class QVLogging;

// A log file of this run: named and made by its first message, and fixed from then on.
//
// Each message is one open, seek to the end, write and close. Messages of several threads come one
// after the other and whole; other processes have files of their own.
class LogFile {
  public:
    enum class Stamp : std::uint8_t { kNone, kFine };

    // Appends a message, in UTF-8, behind "[fine stamp]: " where it is asked for, and behind
    // "[coarse stamp]: " of a moment in seconds since 2001 where there is one. Folder and prefix
    // come from the logging instance, for the first message only. While there is no instance or no
    // folder, messages are lost.
    void append(const NS::AtomicRef<QVLogging>& logging, std::string_view message, Stamp stamp,
                std::optional<double> coarse = std::nullopt);

  private:
    void makeFor(const NS::RefPtr<QVLogging>& logging);
    void create(const NS::String& folder, const NS::RefPtr<NS::String>& prefix);

    // An exception that is raised below a message, by a lack of memory for instance, is logged
    // through here again on the same thread while the lock is held.
    std::recursive_mutex mutex_;
    NS::DateStamp fineStamp_{"[yyyy-MM-dd HH:mm:ss.SS]: "};
    NS::DateStamp coarseStamp_{"[yyyy-MM-dd HH:mm:ss]: "};
    std::unique_ptr<NS::FileAppender> file_; // null before the first message
    NS::ByteBuffer line_;                    // kept for its memory
};
