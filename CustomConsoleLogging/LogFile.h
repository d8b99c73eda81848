#pragma once

#include "Platform/Foundation/DateFormatter.h"
#include "Platform/Foundation/String.h"

#include <cstdint>
#include <initializer_list>
#include <mutex>
#include <string>
#include <string_view>

class QVLogging;

// A log file of this run: named and made by its first message, and fixed from then on.
//
// Each message is one open, seek to the end, write and close. Messages of several threads come one
// after the other and whole; other processes have files of their own.
class LogFile {
  public:
    enum class Stamp : std::uint8_t { kNone, kFine };

    // Appends a message's parts, in UTF-8, behind "[fine stamp]: " where it is asked for. Folder
    // and prefix come from the logging instance, for the first message only; while there is no
    // folder, messages are lost.
    void append(const QVLogging& logging, std::initializer_list<std::string_view> message,
                Stamp stamp);

  private:
    void create(const NS::String& folder, const NS::RefPtr<NS::String>& prefix);
    void write(std::string_view bytes) const;

    // An exception that is raised below a message, by a lack of memory for instance, is logged
    // through here again on the same thread while the lock is held.
    std::recursive_mutex mutex_;
    NS::DateFormatter formatter_{"yyyy-MM-dd HH:mm:ss.SS"};
    NS::RefPtr<NS::String> path_; // nil before the first message
    std::string line_;            // kept for its memory
};
