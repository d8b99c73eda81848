#include "Programs/QuorvaneHost/DriveRequests.h"

#include "Platform/Foundation/Array.h"
#include "Platform/Foundation/Number.h"
#include "Platform/Foundation/String.h"
#include "Programs/QuorvaneHost/HostData.h"
#include "Tests/Support/PrivateFolders.h"
#include "Tests/Support/Process.h"

#include <fstream>
#include <optional>
#include <sstream>

namespace fs = std::filesystem;
using Json = nlohmann::ordered_json;

namespace {

class DriveRequestsTest : public Tests::FolderTest {
  protected:
    DriveRequestsTest() {
        fs::create_directories(drive / "Docs/inner");
        std::ofstream(drive / "Docs/a.txt") << "12345";
        std::ofstream(drive / "Docs/inner/b.txt") << "678";
        requests.emplace(drive.string(), hostDataFolderFor(drive.string()), journal);
    }

    static NS::Ref<NS::String> path(std::string_view text) {
        return NS::String::fromFileSystemRepresentation(text);
    }
    static NS::Ref<NS::Array> paths(std::initializer_list<std::string_view> texts) {
        std::vector<NS::Ref<NS::Object>> list;
        for (const auto text : texts) {
            list.emplace_back(path(text));
        }
        return NS::make<NS::Array>(std::move(list));
    }
    std::vector<Json> lines() const {
        std::vector<Json> all;
        std::istringstream text(out.str());
        for (std::string line; std::getline(text, line);) {
            all.push_back(Json::parse(line));
        }
        return all;
    }
    Json lastLine() const { return lines().back(); }

    fs::path drive = folders.root() / "drive";
    std::ostringstream out;
    Journal journal{out};
    std::optional<DriveRequests> requests;
};

TEST_F(DriveRequestsTest, ShareAnItemByALinkThatStaysTheSame) {
    requests->share(path("/Docs/a.txt"));
    const Json first = lastLine();
    EXPECT_EQ(first["done"], "ext_share");
    EXPECT_EQ(first["path"], "/Docs/a.txt");
    const auto file = first["file"].get<std::string>();
    EXPECT_NE(Tests::contentsOf(file).find("URL=" + first["link"].get<std::string>() + "\n"),
              std::string::npos);
    EXPECT_TRUE(file.starts_with(folders.data().string()));
    requests->share(path("//Docs/./a.txt"));
    EXPECT_EQ(lastLine()["link"], first["link"]);
    requests->share(path("/Docs"));
    EXPECT_NE(lastLine()["link"], first["link"]);
}

TEST_F(DriveRequestsTest, TellThePropertiesOfAFile) {
    requests->showProps(path("/Docs/a.txt"));
    const Json line = lastLine();
    EXPECT_EQ(line["done"], "ext_show_props");
    EXPECT_EQ(line["kind"], "file");
    EXPECT_EQ(line["size"], 5);
    EXPECT_TRUE(line["modified"].get<std::string>().ends_with("Z"));
    EXPECT_FALSE(line.contains("files"));
}

TEST_F(DriveRequestsTest, TellWhatAFolderHolds) {
    fs::create_symlink("/", drive / "Docs/link");
    requests->showProps(path("/Docs"));
    const Json line = lastLine();
    EXPECT_EQ(line["kind"], "folder");
    EXPECT_EQ(line["size"], 8);
    EXPECT_EQ(line["files"], 3);
    EXPECT_EQ(line["folders"], 1);
    requests->showProps(path("/"));
    EXPECT_EQ(lastLine()["folders"], 2);
}

TEST_F(DriveRequestsTest, ReadAFolderAgain) {
    requests->refreshFolder(path("/Docs"));
    EXPECT_EQ(lastLine()["entries"], 2);
    requests->refreshFolder(path("/Docs/a.txt"));
    EXPECT_EQ(lastLine()["refused"], "ext_refresh_folder");
}

TEST_F(DriveRequestsTest, MoveToTheTrashAndBackAndOut) {
    EXPECT_TRUE(requests->moveToTrash(paths({"/Docs/a.txt"})));
    EXPECT_EQ(lastLine().dump(),
              R"({"done":"ext_movetotrash","path":"/Docs/a.txt","to":"/Trash/a.txt"})");
    EXPECT_TRUE(requests->restore(paths({"/Trash/a.txt"})));
    EXPECT_EQ(lastLine()["to"], "/Docs/a.txt");
    EXPECT_TRUE(requests->moveToTrash(paths({"/Docs"})));
    EXPECT_TRUE(requests->remove(paths({"/Trash/Docs/inner"})));
    EXPECT_FALSE(fs::exists(drive / "Trash/Docs/inner"));
    EXPECT_TRUE(requests->emptyTrash());
    EXPECT_EQ(lastLine().dump(), R"({"done":"ext_emptytrash","path":"/Trash/Docs"})");
    EXPECT_FALSE(requests->emptyTrash());
}

TEST_F(DriveRequestsTest, RefuseWhatIsNoPath) {
    requests->share(nullptr);
    EXPECT_EQ(lastLine().dump(),
              R"({"refused":"ext_share","path":null,"reason":"no path was sent"})");
    requests->showProps(NS::Number::numberWithInt(3));
    EXPECT_EQ(lastLine()["reason"], "what was sent is no path");
    requests->refreshFolder(path("X/a"));
    EXPECT_EQ(lastLine()["refused"], "ext_refresh_folder");
    requests->beginObserving(path("/../outside"), "client");
    EXPECT_EQ(lastLine()["refused"], "ext_obs_beg");
}

TEST_F(DriveRequestsTest, RefuseWhatIsNoListOfPaths) {
    EXPECT_FALSE(requests->moveToTrash(nullptr));
    EXPECT_EQ(lastLine()["reason"], "what was sent is no list of paths");
    EXPECT_FALSE(requests->restore(path("/Trash/a")));
    EXPECT_FALSE(requests->remove(NS::Array::arrayWithObjects({NS::Number::numberWithInt(1)})));
    EXPECT_EQ(lastLine().dump(),
              R"({"refused":"ext_trashdelete","path":1,"reason":"what was sent is no path"})");
}

TEST_F(DriveRequestsTest, DoTheRestOfAListWhenOneItemIsRefused) {
    EXPECT_TRUE(requests->moveToTrash(paths({"/missing", "/Docs/a.txt", "/.."})));
    EXPECT_EQ(lines().size(), 3U);
    EXPECT_TRUE(fs::exists(drive / "Trash/a.txt"));
}

TEST_F(DriveRequestsTest, RefuseToShareWhatIsBehindALinkOutOfTheDrive) {
    std::ofstream(folders.root() / "secret") << "secret";
    fs::create_directory_symlink(folders.root(), drive / "out");
    requests->share(path("/out/secret"));
    EXPECT_EQ(lastLine()["reason"], "the path leads out of the drive through a symbolic link");
    EXPECT_FALSE(requests->moveToTrash(paths({"/out/secret"})));
    EXPECT_TRUE(fs::exists(folders.root() / "secret"));
}

TEST_F(DriveRequestsTest, KeepTheFoldersThatEachClientShows) {
    requests->beginObserving(path("/Docs"), "one");
    requests->beginObserving(path("/"), "one");
    EXPECT_EQ(lastLine()["observed"].dump(), R"(["/","/Docs"])");
    requests->beginObserving(path("/Docs"), "two");
    EXPECT_EQ(lastLine()["observed"].dump(), R"(["/Docs"])");
    requests->endObserving(path("/Docs"), "one");
    EXPECT_EQ(lastLine()["observed"].dump(), R"(["/"])");
    requests->endObserving(path("/Docs"), "one");
    EXPECT_EQ(lastLine()["reason"], "this client does not show it");
}

TEST_F(DriveRequestsTest, ForgetTheFoldersOfAClientThatIsGone) {
    requests->beginObserving(path("/Docs"), "one");
    requests->clientGone("one");
    EXPECT_EQ(lastLine().dump(), R"({"gone":"one","observed":["/Docs"]})");
    requests->clientGone("one");
    EXPECT_EQ(lines().size(), 2U);
    requests->endObserving(path("/Docs"), "one");
    EXPECT_EQ(lastLine()["refused"], "ext_obs_end");
}

TEST_F(DriveRequestsTest, TellAFolderTwiceShownUntilItIsTwiceLeft) {
    requests->beginObserving(path("/Docs"), "one");
    requests->beginObserving(path("/Docs"), "one");
    requests->endObserving(path("/Docs"), "one");
    EXPECT_EQ(lastLine()["observed"].dump(), R"(["/Docs"])");
}

TEST_F(DriveRequestsTest, RefuseMoreFoldersThanAClientMayShow) {
    for (std::size_t i = 0; i < ObservedFolders::kMostFolders; ++i) {
        requests->beginObserving(path("/Docs"), "one");
    }
    requests->beginObserving(path("/"), "one");
    EXPECT_EQ(lastLine()["refused"], "ext_obs_beg");
}

TEST_F(DriveRequestsTest, AreOfOneHostAtATime) {
    const auto second = [&] {
        (void)DriveRequests(drive.string(), hostDataFolderFor(drive.string()), journal);
    };
    EXPECT_THROW(second(), Refusal);
    requests.reset();
    EXPECT_NO_THROW(second());
}

TEST_F(DriveRequestsTest, KeepTheBytesOfOddNames) {
    const std::string name = "/\xFF\n\"e\u0301";
    std::ofstream(drive.string() + name) << "x";
    EXPECT_TRUE(requests->moveToTrash(paths({name})));
    EXPECT_TRUE(fs::exists(drive.string() + "/Trash" + name));
    EXPECT_EQ(lastLine()["path"]["$bytes"], "/%FF%0A\"e%CC%81");
}

} // namespace
