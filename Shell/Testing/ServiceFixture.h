#pragma once

#include "Platform/Finder/FinderSyncController.h"
#include "Platform/Ports/Testing/PumpUntil.h"
#include "Shell/FinderInterface.h"
#include "Shell/FinderService.h"
#include "Shell/Testing/BusPeer.h"
#include "Shell/Testing/SampleExtension.h"
#include "Tests/Support/SessionBus.h"

#include <optional>
#include <string>
#include <vector>

namespace Tests {

// A service for a sample extension in this process, and a peer that asks it.
class ServiceTest : public SessionBusTest {
  protected:
    using Calls = std::vector<std::string>;

    ServiceTest() { setWatchedFolders({"/mnt/drive"}); }
    ~ServiceTest() override {
        service.reset();
        peer.reset();
        FI::FinderSyncController::defaultController()->setDirectoryURLs(nullptr);
    }

    static void setWatchedFolders(const std::vector<const char*>& paths) {
        const auto urls = NS::make<NS::MutableSet>();
        for (const char* const path : paths) {
            urls->addObject(NS::URL::fileURLWithPath(NS::str(path)));
        }
        FI::FinderSyncController::defaultController()->setDirectoryURLs(urls);
    }
    bool startService() {
        service.emplace(extension, [this] { return std::vector{extension->record()}; });
        return service->start();
    }
    // Both up, and the peer knows.
    void start() {
        ASSERT_TRUE(startService());
        peer.emplace();
        ASSERT_TRUE(waitForName());
    }
    bool waitForName() {
        return NS::pumpUntil([&] { return peer->nameHasOwner(Shell::FinderInterface::kName); });
    }
    // Turns the run loop for a moment, in which what is under way comes to its end.
    static void settle() {
        (void)NS::pumpUntil([] { return false; }, 0.1);
    }
    Calls takeCalls() { return std::exchange(extension->calls, {}); }

    NS::Ref<SampleExtension> extension = NS::make<SampleExtension>();
    std::optional<Shell::FinderService> service;
    std::optional<BusPeer> peer;
};

} // namespace Tests
