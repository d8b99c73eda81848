// What the host does about requests that came over the link, seen in its files and its journal.

#include "Platform/Foundation/Number.h"
#include "Platform/Ports/RunLoop.h"
#include "Platform/Ports/Testing/PumpUntil.h"
#include "Tests/EndToEnd/ExtensionProcess.h"
#include "Tests/EndToEnd/HostListener.h"

#include <nlohmann/json.hpp>

#include <csignal>
#include <fstream>
#include <optional>
#include <sstream>

namespace fs = std::filesystem;
using Json = nlohmann::json;

namespace {

class HostRequests : public Tests::ProcessTest {
  protected:
    HostRequests() { fs::create_directories(drive / "Docs"); }

    // A host that serves the drive, with an extension; the journal goes on in the same file.
    void start() {
        host.emplace(HOST_PROGRAM,
                     std::vector<std::string>{"--drive", drive.string(), "--journal", journal},
                     folders.root() / "host.out", folders.root() / "host.err");
        ASSERT_TRUE(Tests::hostIsUp());
        listener.emplace();
        ASSERT_TRUE(NS::pumpUntil([&] { return static_cast<bool>(listener->info()); }));
    }
    void kill() {
        host->signal(SIGKILL);
        ASSERT_EQ(host->waitForExit(), 128 + SIGKILL);
        listener.reset();
        fs::remove_all(socketFolder()); // what it left there
    }
    void makeFile(const std::string& path) const { std::ofstream(drive.string() + path) << path; }

    static NS::Ref<NS::String> path(std::string_view text) {
        return NS::String::fromFileSystemRepresentation(text);
    }
    static NS::Ref<NS::Array> paths(const std::vector<std::string>& texts) {
        std::vector<NS::Ref<NS::Object>> list;
        list.reserve(texts.size());
        for (const std::string& text : texts) {
            list.emplace_back(path(text));
        }
        return NS::make<NS::Array>(std::move(list));
    }
    // The journal's lines that have a member, once there are as many.
    std::vector<Json> lines(const std::string& member, std::size_t count) const {
        std::vector<Json> found;
        (void)Tests::waitUntil([&] {
            found.clear();
            std::istringstream text(Tests::contentsOf(journal));
            for (std::string line; std::getline(text, line) && !text.eof();) {
                if (Json json = Json::parse(line); json.contains(member)) {
                    found.push_back(std::move(json));
                }
            }
            return found.size() >= count;
        });
        return found;
    }
    bool showsTrashCount(std::int64_t count) const {
        return NS::pumpUntil(
            [&] { return NS::longLongValue(listener->info()->trashCount()) == count; });
    }
    std::size_t entriesOf(const std::string& folder) const {
        std::error_code error;
        return static_cast<std::size_t>(
            std::distance(fs::directory_iterator(drive.string() + folder, error), {}));
    }

    const std::string journal = (folders.root() / "journal").string();
    std::optional<Tests::Process> host;
    std::optional<Tests::HostListener> listener;
};

TEST_F(HostRequests, SendTheAccountRecordAfterAChange) {
    makeFile("/a");
    makeFile("/b");
    start();
    listener->client().moveToTrash(paths({"/a", "/b"}));
    EXPECT_TRUE(showsTrashCount(2));
    listener->client().restore(paths({"/Trash/a"}));
    EXPECT_TRUE(showsTrashCount(1));
    listener->client().emptyTrash();
    EXPECT_TRUE(showsTrashCount(0));
    EXPECT_TRUE(fs::exists(drive / "a"));
    EXPECT_FALSE(fs::exists(drive / "b"));
}

TEST_F(HostRequests, FreeTheSpaceOfWhatIsDeleted) {
    std::ofstream(drive / "a") << std::string(1'000, 'x');
    start();
    EXPECT_EQ(NS::longLongValue(listener->info()->storageUsed()), 1'000);
    listener->client().moveToTrash(paths({"/a"}));
    ASSERT_TRUE(showsTrashCount(1));
    EXPECT_EQ(NS::longLongValue(listener->info()->storageUsed()), 1'000);
    listener->client().delete_(paths({"/Trash/a"}));
    ASSERT_TRUE(showsTrashCount(0));
    EXPECT_EQ(NS::longLongValue(listener->info()->storageUsed()), 0);
}

TEST_F(HostRequests, LeaveALineForWhatWasDoneAfterTheirOwn) {
    makeFile("/Docs/a");
    start();
    listener->client().share(path("/Docs/a"));
    listener->client().showProps(path("/Docs/a"));
    listener->client().refreshFolder(path("/Docs"));
    const auto done = lines("done", 3);
    ASSERT_EQ(done.size(), 3U);
    EXPECT_EQ(done[0]["done"], "ext_share");
    EXPECT_TRUE(fs::exists(done[0]["file"].get<std::string>()));
    EXPECT_EQ(done[1]["size"], 7);
    EXPECT_EQ(done[2]["entries"], 1);
    const std::string text = Tests::contentsOf(journal);
    EXPECT_LT(text.find(R"({"action":"ext_share")"), text.find(R"({"done":"ext_share")"));
}

TEST_F(HostRequests, AreRefusedForPathsThatAreNoneOnTheDrive) {
    fs::create_directories(folders.root() / "driveX");
    std::ofstream(folders.root() / "driveX/a") << "beside";
    fs::create_directory_symlink("../driveX", drive / "out");
    start();
    listener->client().share(nullptr);
    listener->client().refreshFolder(path("X"));
    listener->client().showProps(NS::Number::numberWithInt(1));
    listener->client().moveToTrash(paths({"X/a", "/../driveX/a", "/out/a", ""}));
    EXPECT_EQ(lines("refused", 7).size(), 7U);
    EXPECT_EQ(lines("done", 0).size(), 0U);
    EXPECT_EQ(Tests::contentsOf(folders.root() / "driveX/a"), "beside");
    EXPECT_TRUE(host->isRunning());
}

TEST_F(HostRequests, TellWhichFoldersAreShown) {
    start();
    listener->client().beginObserving(path("/"));
    listener->client().beginObserving(path("/Docs"));
    listener->client().endObserving(path("/"));
    listener->client().beginObserving(nullptr);
    const auto done = lines("done", 3);
    ASSERT_EQ(done.size(), 3U);
    EXPECT_EQ(done[1]["observed"].dump(), R"(["/","/Docs"])");
    EXPECT_EQ(done[2]["observed"].dump(), R"(["/Docs"])");
    EXPECT_EQ(lines("refused", 1).size(), 1U);
}

TEST_F(HostRequests, ForgetTheFoldersOfAClientThatIsGone) {
    start();
    listener->client().beginObserving(path("/Docs"));
    const auto shown = lines("done", 1);
    ASSERT_EQ(shown.size(), 1U);
    listener.reset();
    listener.emplace(); // announces another
    const auto gone = lines("gone", 1);
    ASSERT_EQ(gone.size(), 1U);
    EXPECT_EQ(gone[0]["gone"], shown[0]["client"]);
    EXPECT_EQ(gone[0]["observed"].dump(), R"(["/Docs"])");
}

TEST_F(HostRequests, KeepNothingForAClientThatHasNotAnnouncedItself) {
    start();
    const auto silent = NS::make<QVExtensionCommsClient>();
    silent->setServerPort(listener->client().serverPort());
    silent->beginObserving(path("/Docs"));
    const auto refused = lines("refused", 1);
    ASSERT_EQ(refused.size(), 1U);
    EXPECT_EQ(refused[0]["path"], "/Docs");
    EXPECT_EQ(refused[0]["reason"], "this client has not announced itself");
    NS::RunLoop::currentRunLoop()->removePort_forMode(NS::Ref<NS::MachPort>(*silent->port()),
                                                      NS::RunLoopMode::kDefault);
}

TEST_F(HostRequests, LoseNothingWhenTheHostIsKilledAmongThem) {
    constexpr std::size_t kFiles = 2'000;
    std::vector<std::string> origins;
    for (std::size_t i = 0; i < kFiles; ++i) {
        origins.push_back("/Docs/" + std::to_string(i));
        makeFile(origins.back());
    }
    for (const std::size_t moved : {1U, 700U, 1'300U}) {
        start();
        listener->client().moveToTrash(paths(origins));
        ASSERT_TRUE(Tests::waitUntil([&] { return entriesOf("/Trash") >= moved; }));
        kill();
        std::vector<std::string> trashed;
        for (const auto& entry : fs::directory_iterator(drive / "Trash")) {
            trashed.push_back("/Trash/" + entry.path().filename().string());
        }
        EXPECT_EQ(trashed.size() + entriesOf("/Docs"), kFiles);
        start();
        listener->client().restore(paths(trashed));
        ASSERT_TRUE(showsTrashCount(0));
        kill();
    }
    for (const std::string& origin : origins) {
        ASSERT_EQ(Tests::contentsOf(drive.string() + origin), origin);
    }
}

} // namespace
