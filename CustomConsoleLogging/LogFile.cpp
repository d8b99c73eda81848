#include "CustomConsoleLogging/LogFile.h"

#include "Platform/Foundation/Clock.h"
#include "Platform/Foundation/FileHandle.h"
#include "Platform/Foundation/FileManager.h"
#include "Platform/Foundation/Format.h"

#include <string>

void LogFile::create(const NS::String& folder, const NS::String& prefix) {
    const auto name =
        NS::stringWithFormat("%@Log-%@.txt", &prefix, formatter_.stringFromDate(NS::Date::date()));
    path_ = folder.stringByAppendingString(*name);
    NS::FileManager& files = NS::FileManager::defaultManager();
    (void)files.createDirectoryAtPath(folder); // lines are lost without it, and nobody is told
    (void)files.createFileAtPath_contents(*path_, {});
}

void LogFile::append(const NS::String& folder, const NS::String& prefix, std::string_view message,
                     Stamp stamp) {
    const std::scoped_lock lock(mutex_);
    if (!path_) {
        create(folder, prefix);
    }
    std::string line;
    line.reserve(message.size() + 28);
    if (stamp == Stamp::kFine) {
        line += '[';
        formatter_.appendDate(NS::absoluteTimeGetCurrent(), line);
        line += "]: ";
    }
    line += message;
    auto file = NS::FileHandle::fileHandleForWritingAtPath(*path_);
    if (file && file->seekToEndOfFile()) {
        (void)file->writeData(NS::bytesOf(line)); // a full disk loses the line
    }
}
