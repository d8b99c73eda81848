#include "Shell/Client/Testing/ClientFixture.h"
#include "Shell/FinderInterface.h"

namespace {

// The name of an extension that waits for its host, as a client sees it.
class FollowedName : public Tests::ClientTest {
  protected:
    void SetUp() override { extension.emplace(std::vector<std::string>{kDrive}); }
};

TEST_F(FollowedName, IsKnownToAClientThatComesLater) {
    extension->wait();
    connect();
    EXPECT_TRUE(pump([&] { return client->isWaiting(); }));
    EXPECT_FALSE(client->isPresent());
}

TEST_F(FollowedName, ComesAndGoesWithAChangeEach) {
    connect();
    EXPECT_FALSE(client->isWaiting());
    int changes = 0;
    client->setOnChange([&] { ++changes; });
    client->serve();
    changes = 0;
    extension->wait();
    EXPECT_TRUE(pump([&] { return client->isWaiting(); }));
    EXPECT_EQ(changes, 1);
    extension.reset();
    EXPECT_TRUE(pump([&] { return !client->isWaiting(); }));
    EXPECT_EQ(changes, 2);
}

TEST_F(FollowedName, CountsNoLongerOnceItsOwnerIsPresent) {
    extension->wait();
    connect();
    ASSERT_TRUE(pump([&] { return client->isWaiting(); }));
    extension->appear();
    ASSERT_TRUE(pump([&] { return client->isPresent(); }));
    EXPECT_FALSE(client->isWaiting());
}

TEST_F(FollowedName, GoesWithTheBus) {
    extension->wait();
    connect();
    ASSERT_TRUE(pump([&] { return client->isWaiting(); }));
    bus.daemon().signal(SIGKILL);
    EXPECT_TRUE(pump([&] { return !client->isWaiting(); }));
}

} // namespace
