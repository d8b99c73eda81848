#include "CustomConsoleLogging/LoggingState.h"
#include "CustomConsoleLogging/consoleLogging.h"
#include "Platform/Foundation/SearchPaths.h"
#include "Platform/Foundation/UserDefaults.h"

#include <memory>

constinit const NS::Class QVLogging::kClass{.name = "QVLogging", .superclass = &NS::Object::kClass};

namespace {

// Never taken down: a thread may log while the process ends.
std::unique_ptr<LoggingState>& state() {
    static auto& instance = *new std::unique_ptr<LoggingState>(std::make_unique<LoggingState>());
    return instance;
}

const NS::String& runningKey() {
    static const NS::Ref<NS::String>& key = *new NS::Ref<NS::String>(NS::str("running"));
    return *key;
}

} // namespace

LoggingState& LoggingState::shared() {
    return *state();
}

void LoggingState::reset() {
    state() = std::make_unique<LoggingState>();
}

void QVLogging::setupWithPrefix(const NS::Ref<NS::String>& prefix) {
    const auto logging = NS::make<QVLogging>();
    LoggingState::shared().instance.store(logging);
    logging->setPrefix(prefix);
    logging->setPath(NS::searchPathForDirectoryInDomain(
                         NS::SearchPathDirectory::kApplicationSupport, NS::SearchPathDomain::kUser)
                         ->stringByAppendingString(*NS::str("/Quorvane/LogDirectory/")));
    NS::setUncaughtExceptionHandler(&exceptionHandler);
}

NS::RefPtr<QVLogging> QVLogging::sharedInstance() {
    return LoggingState::shared().instance.load();
}

void QVLogging::fileMessage_succinct(const NS::String& message, bool succinct) {
    LoggingState::shared().file.append(*path(), *prefix(), message.utf8(),
                                       succinct ? LogFile::Stamp::kNone : LogFile::Stamp::kFine);
}

void QVLogging::fileSuccinctMessage(const NS::String& message) {
    LoggingState::shared().succinctFile.append(*path(), *prefix(), message.utf8(),
                                               LogFile::Stamp::kNone);
}

bool QVLogging::checkQuitFlag() const {
    return NS::UserDefaults::standardUserDefaults()->boolForKey(runningKey());
}

void QVLogging::setRunningFlag(bool flag) {
    NS::UserDefaults::standardUserDefaults()->setBool_forKey(flag, runningKey());
}

void QVLogging::setLastCrashReportDate(const NS::RefPtr<NS::Object>&) {}

NS::RefPtr<NS::Object> QVLogging::checkLastCrashReportDate() const {
    return nullptr;
}
