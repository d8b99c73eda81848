// Serves a sample extension until it is ended: the process of a test. Writes a line for each menu.

#include "Platform/Finder/FinderSyncController.h"
#include "Platform/Foundation/Exception.h"
#include "Platform/Foundation/Log.h"
#include "Platform/Ports/RunLoop.h"
#include "Shell/FinderService.h"
#include "Shell/Testing/SampleExtension.h"

#include <cstdio>

int main() {
    NS::setUncaughtExceptionHandler([](const NS::Exception& exception) {
        NS::Log("uncaught %@ %@", exception.name(), exception.reason());
    });
    FI::FinderSyncController::defaultController()->setDirectoryURLs(
        NS::Set::setWithObject(NS::URL::fileURLWithPath(NS::str("/mnt/drive"))));
    const auto extension = NS::make<Tests::SampleExtension>();
    extension->onMenu = [] {
        (void)std::puts("menu");
        (void)std::fflush(stdout);
    };
    Shell::FinderService service(extension, [] { return std::vector<NS::RefPtr<NS::Object>>(); });
    if (!service.start()) {
        return 1;
    }
    NS::RunLoop::currentRunLoop()->run();
}
