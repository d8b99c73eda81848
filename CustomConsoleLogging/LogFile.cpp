#include "CustomConsoleLogging/LogFile.h"

#include "CustomConsoleLogging/QVLogging.h"
#include "Platform/Foundation/FileManager.h"
#include "Platform/Foundation/Format.h"

namespace {

// A line beyond this gives its memory back.
constexpr std::size_t kKeptLine = std::size_t{64} << 10U;

} // namespace

void LogFile::append(const QVLogging& logging, std::initializer_list<std::string_view> message,
                     Stamp stamp) {
    const std::lock_guard lock(mutex_);
    if (!path_) {
        const NS::RefPtr<NS::String> folder = logging.path();
        if (!folder) {
            return;
        }
        create(*folder, logging.prefix());
    }
    line_.clear();
    if (stamp == Stamp::kFine) {
        ((line_ += '[') += formatter_.now()) += "]: ";
    }
    for (const std::string_view part : message) {
        line_ += part;
    }
    write(line_);
    if (line_.capacity() > kKeptLine) {
        std::string().swap(line_);
    }
}

void LogFile::create(const NS::String& folder, const NS::RefPtr<NS::String>& prefix) {
    const auto name =
        NS::stringWithFormat("%@Log-%@.txt", prefix, formatter_.stringFromDate(*NS::Date::date()));
    path_ = folder.stringByAppendingString(*name);
    NS::FileManager& files = NS::FileManager::defaultManager();
    // Where one of them fails the file cannot be opened, and the lines are lost in silence.
    (void)files.createDirectoryAtPath(folder);
    (void)files.createFileAtPath_contents(*path_, {});
}

void LogFile::write(std::string_view bytes) const {
    auto file = NS::FileHandle::fileHandleForWritingAtPath(*path_);
    // A file without an end to go to would be overwritten from its start.
    if (file && file->seekToEndOfFile()) {
        (void)file->writeData(NS::bytesOf(bytes)); // a full disk loses the line
    }
}
