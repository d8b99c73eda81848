#include "QVFinderExtension/FinderSync.h"

#include "CustomConsoleLogging/consoleLogging.h"
#include "Platform/Finder/FinderSyncController.h"
#include "Platform/Foundation/Clock.h"
#include "Platform/Foundation/Date.h"
#include "Platform/Foundation/Set.h"
#include "Platform/Foundation/URL.h"
#include "Platform/Ports/RunLoop.h"
#include "QVApi/Content/QVContentClasses.h"
#include "QVFinderExtension/QVExtensionActions.h"

#include <cstdlib>

namespace {

constexpr double kTurnSeconds = 1.0;
// The pause between turns has always been a single-precision tenth.
constexpr float kPauseSeconds = 0.1F;

constexpr NS::Selector kExtensionInit{"extensionInit:"};
constexpr NS::Selector kReceivedUserInfo{"receivedUserInfo:"};
constexpr NS::Selector kShutdown{"shutdown"};

constexpr NS::Method kMethods[] = {
    // Messages of the host.
    NS::method<&FinderSync::extensionInit>("extensionInit:"),
    NS::method<&FinderSync::receivedUserInfo>("receivedUserInfo:"),
    NS::method<&FinderSync::shutdown>("shutdown"),
    // Actions of the menus.
    NS::method<&FinderSync::shareItem>("shareItem:"),
    NS::method<&FinderSync::showProps>("showProps"),
    NS::method<&FinderSync::refreshFolder>("refreshFolder"),
    NS::method<&FinderSync::moveToTrash>("moveToTrash"),
    NS::method<&FinderSync::restore>("restore"),
    NS::method<&FinderSync::delete_>("delete"),
    NS::method<&FinderSync::emptyTrash>("emptyTrash"),
};

} // namespace

constinit const NS::Class FinderSync::kClass{
    .name = "FinderSync", .superclass = &FI::FinderSync::kClass, .methods = kMethods};

FinderSync::~FinderSync() {
    setDrivePath(nullptr);
    setComms(nullptr);
    setStorageInfo(nullptr);
}

void FinderSync::init() {
    QVLogging::setupWithPrefix(NS::str("FE"));
    QVLogging::sharedInstance()->cleanup();
    (void)qvContentClasses(); // the host's records can be restored only by classes that are linked
    setComms(QVExtensionCommsClient::new_());
    registerHandlers();
    waitForDrivePath();
    _Log("DEBUG ", __FILE__, __LINE__, "-[FinderSync init]", "initial init at %@",
         FI::FinderSyncController::defaultController()->directoryURLs());
}

void FinderSync::registerHandlers() {
    const NS::Ref<NS::Object> self(*this);
    const auto link = comms();
    link->setTarget_selector_for(self, kExtensionInit, NS::str(QVExtensionAction::kInit));
    link->setTarget_selector_for(self, kReceivedUserInfo, NS::str(QVExtensionAction::kUserInfo));
    link->setTarget_selector_for(self, kShutdown, NS::str(QVExtensionAction::kServerShutdown));
}

void FinderSync::waitForDrivePath() {
    while (!drivePath()) {
        NS::RunLoop::currentRunLoop()->runUntilDate(
            *NS::Date::dateWithTimeIntervalSinceNow(kTurnSeconds));
        NS::sleepForTimeInterval(kPauseSeconds);
    }
}

void FinderSync::extensionInit(NS::RefPtr<NS::String> path) {
    FI::FinderSyncController::defaultController()->setDirectoryURLs(
        NS::Set::setWithObject(NS::URL::fileURLWithPath(path)));
    if (const auto link = comms()) {
        link->requestUserInfo();
    }
    // Last, since it ends the wait in init().
    setDrivePath(path);
    _Log("DEBUG ", __FILE__, __LINE__, "-[FinderSync extensionInit:]", "received init at %@", path);
}

void FinderSync::receivedUserInfo(NS::RefPtr<NS::Object> info) {
    _Log("DEBUG ", __FILE__, __LINE__, "-[FinderSync receivedUserInfo:]", "received info %@", info);
    setStorageInfo(info);
}

void FinderSync::shutdown() {
    std::exit(0);
}

void FinderSync::requestBadgeIdentifierForURL(const NS::Ref<NS::URL>&) {}
