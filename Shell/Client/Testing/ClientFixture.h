#pragma once

#include "Shell/Client/FinderClient.h"
#include "Shell/Client/Testing/FakeExtension.h"
#include "Tests/Support/SessionBus.h"

#include <chrono>
#include <csignal>
#include <functional>
#include <optional>
#include <poll.h>
#include <string>
#include <vector>

namespace Tests {

// A client on a bus of the test's own, and what it may find there: an extension that watches
// "/mnt/Drive", which does not exist.
class ClientTest : public SessionBusTest {
  protected:
    static constexpr const char* kDrive = "file:///mnt/Drive";
    // For questions that are answered; none of these waits so long.
    static constexpr std::chrono::milliseconds kLong = kPatience;

    // Both up, and the client knows.
    void start() {
        extension.emplace(std::vector<std::string>{kDrive});
        extension->appear();
        connect();
        ASSERT_TRUE(client->isPresent()) << client->error();
    }
    void connect() {
        client.emplace();
        ASSERT_TRUE(client->waitUntilKnown(kLong)) << client->error();
    }
    // Serves the client as a file manager's loop does, until a condition holds.
    bool pump(const std::function<bool()>& condition) {
        return waitUntil([&] {
            pollfd ready{client->descriptor(), POLLIN, 0};
            if (::poll(&ready, 1, 0) > 0) {
                client->serve();
            }
            return condition();
        });
    }
    bool isReadable() const {
        pollfd ready{client->descriptor(), POLLIN, 0};
        return ::poll(&ready, 1, 0) > 0;
    }
    void stop(Process& process) {
        process.signal(SIGSTOP);
        ASSERT_TRUE(process.waitForState('T'));
    }

    std::optional<FakeExtension> extension;
    std::optional<Shell::FinderClient> client;
};

} // namespace Tests
