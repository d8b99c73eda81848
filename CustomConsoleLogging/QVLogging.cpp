#include "CustomConsoleLogging/QVLogging.h"

#include "CustomConsoleLogging/LoggingFolders.h"
#include "CustomConsoleLogging/LoggingState.h"
#include "CustomConsoleLogging/TextBytes.h"
#include "CustomConsoleLogging/consoleLogging.h"
#include "Platform/Foundation/UserDefaults.h"

constinit const NS::Class QVLogging::kClass{.name = "QVLogging", .superclass = &NS::Object::kClass};

namespace {

constexpr std::string_view kRunningKey = "running";

} // namespace

void QVLogging::setupWithPrefix(NS::RefPtr<NS::String> prefix) {
    const auto logging = NS::make<QVLogging>();
    logging->setPrefix(std::move(prefix));
    logging->setPath(userLoggingFolder());
    LoggingState::shared().instance.store(logging);
    NS::setUncaughtExceptionHandler(&exceptionHandler);
}

NS::RefPtr<QVLogging> QVLogging::sharedInstance() {
    return LoggingState::shared().instance.load();
}

void QVLogging::fileMessage_succinct(const NS::RefPtr<NS::String>& message, bool succinct) {
    if (!message) {
        return;
    }
    NS::AtomicRef<QVLogging> self;
    self.store(this);
    withUtf8(*message, [&](std::string_view bytes) {
        LoggingState::shared().file.append(
            self, bytes, succinct ? LogFile::Stamp::kNone : LogFile::Stamp::kFine);
    });
}

void QVLogging::fileSuccinctMessage(const NS::RefPtr<NS::String>& message) {
    if (!message) {
        return;
    }
    NS::AtomicRef<QVLogging> self;
    self.store(this);
    withUtf8(*message, [&](std::string_view bytes) {
        LoggingState::shared().succinctFile.append(self, bytes, LogFile::Stamp::kNone);
    });
}

bool QVLogging::checkQuitFlag() const {
    return NS::UserDefaults::standardUserDefaults()->boolForKey(*NS::str(kRunningKey));
}

void QVLogging::setRunningFlag(bool flag) {
    NS::UserDefaults::standardUserDefaults()->setBool_forKey(flag, *NS::str(kRunningKey));
}

void QVLogging::setLastCrashReportDate(const NS::RefPtr<NS::Object>&) {}

NS::RefPtr<NS::Object> QVLogging::checkLastCrashReportDate() const {
    return nullptr;
}
