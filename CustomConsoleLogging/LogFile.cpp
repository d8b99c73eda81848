#include "CustomConsoleLogging/LogFile.h"

#include "CustomConsoleLogging/QVLogging.h"
#include "Platform/Foundation/Clock.h"
#include "Platform/Foundation/DateFormatter.h"
#include "Platform/Foundation/FileManager.h"
#include "Platform/Foundation/Format.h"

namespace {

// A line beyond this gives its memory back.
constexpr std::size_t kKeptLine = std::size_t{64} << 10U;

} // namespace

// The instance is referred to for the first message only: later ones ask nothing of it.
void LogFile::append(const NS::AtomicRef<QVLogging>& logging, std::string_view message, Stamp stamp,
                     std::optional<double> coarse) {
    if (logging.peek() == nullptr) {
        return;
    }
    const std::lock_guard lock(mutex_);
    if (!file_) {
        makeFor(logging.load());
    }
    if (!file_) {
        return;
    }
    line_.clear();
    if (stamp == Stamp::kFine) {
        fineStamp_.append(line_, NS::absoluteTimeGetCurrent());
    }
    if (coarse) {
        coarseStamp_.append(line_, *coarse);
    }
    line_.extend(message.copy(reinterpret_cast<char*>(line_.room(message.size())), message.size()));
    // The line is lost where the file is gone or its disk is full.
    (void)file_->append(line_);
    if (line_.heldBytes() > kKeptLine) {
        line_ = {};
    }
}

void LogFile::makeFor(const NS::RefPtr<QVLogging>& logging) {
    const NS::RefPtr<NS::String> folder = logging ? logging->path() : nullptr;
    if (folder) {
        create(*folder, logging->prefix());
    }
}

void LogFile::create(const NS::String& folder, const NS::RefPtr<NS::String>& prefix) {
    NS::DateFormatter formatter("yyyy-MM-dd HH:mm:ss.SS");
    const auto name =
        NS::stringWithFormat("%@Log-%@.txt", prefix, formatter.stringFromDate(*NS::Date::date()));
    const auto path = folder.stringByAppendingString(*name);
    NS::FileManager& files = NS::FileManager::defaultManager();
    file_ = files.appenderForPath(*path);
    // Where one of them fails the file cannot be opened, and the lines are lost in silence.
    (void)files.createDirectoryAtPath(folder);
    (void)files.createFileAtPath_contents(*path, {});
}
