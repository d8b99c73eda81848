#include "Shell/Testing/ServiceFixture.h"

namespace {

class FinderServiceMemory : public Tests::ServiceTest {
  protected:
    // Of a process, in KiB.
    static long residentMemory(const Tests::Process& process) {
        const std::string status =
            Tests::contentsOf("/proc/" + std::to_string(process.pid()) + "/status");
        const std::string field = "\nVmRSS:";
        return std::stol(status.substr(status.find(field) + field.size()));
    }
};

TEST_F(FinderServiceMemory, IsGivenBackAfterALargeSelection) {
    Tests::Process process(SERVICE_PROGRAM, {}, folders.root() / "out", folders.root() / "err");
    peer.emplace();
    ASSERT_TRUE(waitForName());
    EXPECT_NE(peer->menu(0, {}), "");
    const long before = residentMemory(process);
    // Refused at the last item, so that the extension itself keeps nothing of it.
    Tests::PlaceArguments place;
    place.selection.assign(100'000, "file:///mnt/drive/" + std::string(100, 'n'));
    place.selection.emplace_back("none");
    EXPECT_NE(peer->menu(0, place).find("item 100001 of the selection"), std::string::npos);
    EXPECT_TRUE(Tests::waitUntil([&] { return residentMemory(process) < before + 4096; }))
        << before << " " << residentMemory(process);
}

} // namespace
