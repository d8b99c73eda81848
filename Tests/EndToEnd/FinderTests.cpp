// A person's way through the drive: what is selected, which entries there are, what picking one
// does to the files.

#include "Shell/Client/FinderClient.h"
#include "Tests/EndToEnd/DriveSession.h"

#include <csignal>
#include <fstream>
#include <set>
#include <utility>

namespace fs = std::filesystem;

namespace {

using Titles = std::vector<std::string>;

const std::string kDashes = "[\u2014\u2014\u2014\u2014\u2014\u2014\u2014\u2014\u2014\u2014"
                            "\u2014\u2014\u2014\u2014\u2014\u2014\u2014]";

class Finder : public Tests::DriveSession {
  protected:
    Finder() { start(); }

    // What the host says that it did for an action; null when it does not say so.
    nlohmann::json doneSoon(std::string_view action) {
        nlohmann::json found;
        EXPECT_TRUE(Tests::waitUntil([&] {
            for (const auto& line : journal()) {
                if (line.value("done", "") == action) {
                    found = line;
                }
            }
            return !found.is_null();
        })) << host->output();
        return found;
    }
    std::set<std::string> namesIn(const char* folder) const {
        std::set<std::string> names;
        for (const auto& entry : fs::directory_iterator(drive / folder)) {
            names.insert(entry.path().filename().string());
        }
        return names;
    }

    // The argument of the one request of an action.
    std::string argumentOf(std::string_view action) {
        const auto found = requestsSoon(action);
        EXPECT_EQ(found.size(), 1U);
        return found.empty() ? "none" : found.front()["payload"].dump();
    }
};

TEST_F(Finder, ShowsTheStateOfTheExtension) {
    const auto status = nlohmann::json::parse(answer({"status", "--json"}));
    EXPECT_EQ(status["running"], true);
    EXPECT_EQ(status["watchedFolders"], nlohmann::json::array({drive.string()}));
    EXPECT_EQ(status["toolbarItem"]["name"], "Fennmoor Cloud");
    EXPECT_EQ(status["toolbarItem"]["toolTip"], "Mounted at " + drive.string());
    EXPECT_EQ(status["toolbarItem"]["image"], "MainOnline");
    EXPECT_TRUE(fs::exists(status["toolbarItem"]["imageFile"].get<std::string>()));
}

TEST_F(Finder, ShowsTheMenuOfASelection) {
    makeFile("a.txt");
    makeFile("b.txt");
    makeFile("Trash/c.txt");
    EXPECT_EQ(titles({"a.txt"}), (Titles{"QV: Share", "QV: Show Properties", "QV: Move To Trash"}));
    EXPECT_EQ(titles({"a.txt", "b.txt"}), Titles{"QV: Move To Trash"});
    EXPECT_EQ(titles({"Trash/c.txt"}), (Titles{"QV: Restore", "QV: Delete"}));
    EXPECT_EQ(titles({"a.txt", "Trash/c.txt"}), Titles());
    EXPECT_EQ(titles({"Trash"}), Titles());
    EXPECT_EQ(titles({"--kind", "sidebar", "Docs"}), (Titles{"QV: Share", "QV: Show Properties"}));
}

TEST_F(Finder, ShowsTheMenuOfAFolder) {
    const Titles expected{"QV: Share", "QV: Show Properties", "QV: Refresh Folder"};
    EXPECT_EQ(titles({}), expected);
    EXPECT_EQ(titles({"--kind", "container", "--target", "Docs"}), expected);
}

TEST_F(Finder, ShowsTheMenuAsAPersonWouldSeeIt) {
    makeFile("a.txt");
    EXPECT_EQ(answer({"menu", "a.txt"}), "QV: Share\nQV: Show Properties\nQV: Move To Trash\n");
}

TEST_F(Finder, SharesAFile) {
    makeFile("Docs/a.txt");
    EXPECT_EQ(answer({"pick", "QV: Share", "Docs/a.txt"}), "");
    EXPECT_EQ(argumentOf("ext_share"), R"(["/Docs/a.txt"])");
    const auto done = doneSoon("ext_share");
    EXPECT_EQ(done["path"], "/Docs/a.txt");
    EXPECT_NE(
        Tests::contentsOf(done["file"].get<std::string>()).find(done["link"].get<std::string>()),
        std::string::npos);
}

TEST_F(Finder, SharesTheFolderThatIsShown) {
    answer({"pick", "QV: Share", "--target", "Docs"});
    EXPECT_EQ(argumentOf("ext_share"), R"(["/Docs"])");
}

TEST_F(Finder, ShowsTheProperties) {
    makeFile("Docs/a.txt");
    answer({"pick", "QV: Show Properties", "Docs/a.txt"});
    EXPECT_EQ(argumentOf("ext_show_props"), R"(["/Docs/a.txt"])");
    EXPECT_EQ(doneSoon("ext_show_props")["size"], 1);
}

TEST_F(Finder, RefreshesTheFolderAndNotTheSelectedFile) {
    makeFile("Docs/a.txt");
    answer({"pick", "QV: Refresh Folder", "--kind", "container", "Docs/a.txt"});
    EXPECT_EQ(argumentOf("ext_refresh_folder"), R"(["/Docs"])");
}

TEST_F(Finder, RefreshesTheFolderFromTheToolbar) {
    makeFile("Docs/a.txt");
    answer({"pick", "Refresh Folder", "--kind", "toolbar", "--target", "Docs"});
    EXPECT_EQ(argumentOf("ext_refresh_folder"), R"(["/Docs"])");
    EXPECT_EQ(doneSoon("ext_refresh_folder")["entries"], 1);
}

TEST_F(Finder, MovesFilesToTheTrashAndBack) {
    makeFile("Docs/a.txt", "first");
    makeFile("b.txt", "second");
    answer({"pick", "QV: Move To Trash", "Docs/a.txt", "b.txt"});
    ASSERT_TRUE(isOnDriveSoon("Trash/b.txt"));
    EXPECT_FALSE(isOnDrive("Docs/a.txt"));
    EXPECT_EQ(Tests::contentsOf(drive / "Trash/a.txt"), "first");
    answer({"pick", "QV: Restore", "Trash/a.txt", "Trash/b.txt"});
    ASSERT_TRUE(isOnDriveSoon("b.txt"));
    EXPECT_EQ(Tests::contentsOf(drive / "Docs/a.txt"), "first");
    EXPECT_EQ(Tests::contentsOf(drive / "b.txt"), "second");
}

TEST_F(Finder, DeletesFromTheTrash) {
    makeFile("a.txt");
    makeFile("b.txt");
    answer({"pick", "QV: Move To Trash", "a.txt", "b.txt"});
    ASSERT_TRUE(isOnDriveSoon("Trash/b.txt"));
    answer({"pick", "QV: Delete", "Trash/a.txt"});
    EXPECT_TRUE(isGoneSoon("Trash/a.txt"));
    EXPECT_TRUE(isOnDrive("Trash/b.txt"));
    EXPECT_EQ(argumentOf("ext_trashdelete"), R"([["/Trash/a.txt"]])");
}

TEST_F(Finder, EmptiesTheTrash) {
    makeFile("Trash/a/b.txt");
    answer({"pick", "Empty Trash", "--kind", "toolbar"});
    EXPECT_TRUE(isGoneSoon("Trash/a"));
    EXPECT_TRUE(isOnDrive("Trash"));
}

TEST_F(Finder, ShowsTheNewTrashCountAndStorageAfterAChange) {
    makeFile("a.txt", std::string(1'500, 'x'));
    const auto menu = [&](const char* count, const char* storage) {
        const Titles expected{std::string("Empty Trash (") + count + ")", kDashes, "Refresh Folder",
                              kDashes, std::string("[") + storage + "]"};
        return Tests::waitUntil([&] { return titles({"--kind", "toolbar"}) == expected; });
    };
    EXPECT_TRUE(menu("0", "1.5 KB of 5.37 GB used"));
    answer({"pick", "QV: Move To Trash", "a.txt"});
    EXPECT_TRUE(menu("1", "1.5 KB of 5.37 GB used"));
    answer({"pick", "Empty Trash (1)", "--kind", "toolbar"});
    EXPECT_TRUE(menu("0", "0 bytes of 5.37 GB used"));
}

TEST_F(Finder, TellsWhichFolderIsShown) {
    answer({"observe", "begin", "Docs"});
    answer({"observe", "begin", "."});
    answer({"observe", "end", "Docs"});
    const auto begun = requestsSoon("ext_obs_beg", 2);
    ASSERT_EQ(begun.size(), 2U);
    EXPECT_EQ(begun[0]["payload"].dump(), R"(["/Docs"])");
    EXPECT_EQ(begun[1]["payload"].dump(), R"(["/"])");
    EXPECT_EQ(argumentOf("ext_obs_end"), R"(["/Docs"])");
}

TEST_F(Finder, TellsWhenAnEntryIsNotInTheMenu) {
    makeFile("a.txt");
    const auto finished = finder({"pick", "QV: Restore", "a.txt"});
    EXPECT_EQ(finished.status, 1);
    EXPECT_EQ(finished.errors, "quorvane-finder: \"QV: Restore\" is not in the menu here\n");
}

TEST_F(Finder, TellsWhenAPathDoesNotExist) {
    const auto finished = finder({"menu", "missing"});
    EXPECT_EQ(finished.status, 1);
    EXPECT_EQ(finished.output, "");
    EXPECT_EQ(finished.errors, "quorvane-finder: no such file or folder: missing\n");
}

TEST_F(Finder, TellsEachMistakeInOneLine) {
    const auto finished = finder({"menu", "no\nsuch\033[2Jfile"});
    EXPECT_EQ(finished.errors, "quorvane-finder: no such file or folder: no?such?[2Jfile "
                               "(paths on standard input are separated by NUL)\n");
}

TEST_F(Finder, TellsWhenTheExtensionIsNotRunning) {
    extension->signal(SIGKILL);
    EXPECT_TRUE(extension->waitForExit());
    const auto expectAbsence = [&](const std::vector<std::string>& command) {
        const auto finished = finder(command);
        EXPECT_EQ(finished.status, 1);
        EXPECT_EQ(finished.errors, "quorvane-finder: the extension is not running\n");
    };
    expectAbsence({"status"});
    expectAbsence({"menu"});
    expectAbsence({"pick", "QV: Share", "--kind", "container"});
    expectAbsence({"observe", "begin", "."});
}

TEST_F(Finder, TellsWhatIsWrongWithItsUsage) {
    EXPECT_EQ(finder({}).status, 2);
    EXPECT_EQ(finder({"menu", "--kind", "other"}).status, 2);
    EXPECT_EQ(finder({"--help"}).status, 0);
    EXPECT_EQ(finder({"--version"}).output, "quorvane-finder 0.1.0\n");
}

TEST_F(Finder, OffersNothingForTheDriveItselfAndHarmsNobody) {
    EXPECT_EQ(titles({drive.string()}), Titles());
    EXPECT_EQ(titles({drive.string() + "/"}), Titles());
    EXPECT_EQ(titles({"Docs/.."}), Titles());
    EXPECT_TRUE(extension->isRunning());
}

TEST_F(Finder, OffersNothingBesideTheDrive) {
    const fs::path sibling = drive.string() + "X";
    fs::create_directories(sibling / "Trash");
    EXPECT_EQ(titles({(sibling / "Trash").string()}), Titles());
    EXPECT_EQ(titles({"--target", sibling.string()}), Titles());
    const auto refused =
        finder({"pick", "Refresh Folder", "--kind", "toolbar", "--target", sibling.string()});
    EXPECT_EQ(refused.status, 1);
}

TEST_F(Finder, WorksThroughASymbolicLinkToTheDrive) {
    makeFile("Docs/a.txt");
    const fs::path link = folders.root() / "link";
    fs::create_symlink(drive, link);
    answer({"pick", "QV: Move To Trash", (link / "Docs/a.txt").string()});
    EXPECT_TRUE(isOnDriveSoon("Trash/a.txt"));
    EXPECT_EQ(argumentOf("ext_movetotrash"), R"([["/Docs/a.txt"]])");
}

TEST_F(Finder, TrashesASymbolicLinkAndNotWhatItLeadsTo) {
    makeFile("a.txt");
    fs::create_symlink("a.txt", drive / "link");
    answer({"pick", "QV: Move To Trash", "link"});
    EXPECT_TRUE(isOnDriveSoon("Trash/link"));
    EXPECT_TRUE(isOnDrive("a.txt"));
}

struct OddName {
    const char* name;
    std::string bytes;
};

class OddNames : public Finder, public testing::WithParamInterface<OddName> {};

TEST_P(OddNames, ReachTheHostUnchanged) {
    const std::string& name = GetParam().bytes;
    makeFile(name);
    answer({"pick", "QV: Move To Trash"}, (drive / name).string());
    EXPECT_TRUE(isOnDriveSoon("Trash/" + name));
    EXPECT_TRUE(isGoneSoon(name));
    // One command, whatever the name looks like.
    EXPECT_EQ(requestsSoon("ext_movetotrash").size(), 1U);
    answer({"pick", "QV: Restore", (drive / "Trash" / name).string()});
    EXPECT_TRUE(isOnDriveSoon(name));
}

INSTANTIATE_TEST_SUITE_P(
    Of, OddNames,
    testing::Values(OddName{"Blanks", " a  b "}, OddName{"Quotes", "a\"b'c`d"},
                    OddName{"Newlines", "a\nMOVETOTRASH:Docs\n"}, OddName{"Colons", ":a:b:"},
                    OddName{"PercentSigns", "100%25%@%s"}, OddName{"Emoji", "\U0001F600\u200D"},
                    OddName{"ComposedAccents", "\u00e9t\u00e9"},
                    OddName{"DecomposedAccents", "e\u0301te\u0301"},
                    OddName{"NoUnicode", "\xFF\xC3(\xED\xA0\x80"},
                    OddName{"Controls", "\x01\x7F\t"}, OddName{"Backslashes", "a\\b\\n"},
                    OddName{"AllOfALine", std::string(255, 'n')}, OddName{"LikeAnOption", "--help"},
                    OddName{"LikeAUrl", "file:?#[]@!$&()*+,;="}),
    [](const auto& test) { return test.param.name; });

TEST_F(Finder, TakesAPathOf4000Bytes) {
    // Folder by folder, since no call takes more than that at once.
    std::string path;
    const auto before = fs::current_path();
    fs::current_path(drive);
    while ((drive.string() + path).size() < 3'700) {
        const std::string name(200, 'd');
        fs::create_directory(name);
        fs::current_path(name);
        path += "/" + name;
    }
    const std::string name(4'000 - drive.string().size() - path.size() - 1 - 40, 'f');
    { std::ofstream(name) << "deep"; }
    fs::current_path(before);
    answer({"pick", "QV: Move To Trash", drive.string() + path + "/" + name});
    EXPECT_TRUE(isOnDriveSoon("Trash/" + name));
    answer({"pick", "QV: Restore", "Trash/" + name});
    EXPECT_TRUE(isGoneSoon("Trash/" + name));
    EXPECT_EQ(Tests::contentsOf(drive.string() + path + "/" + name), "deep");
}

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr int kMany = 10'000;
#else
constexpr int kMany = 100'000;
#endif
// What a slow disk may take to move as many.
constexpr std::chrono::minutes kLong{4};

TEST_F(Finder, TakesALargeSelectionAtOnce) {
    std::string paths;
    std::string trashed;
    std::set<std::string> names;
    for (int i = 0; i < kMany; ++i) {
        names.insert("item " + std::to_string(i));
    }
    fs::create_directories(drive / "Many");
    for (const std::string& name : names) {
        std::ofstream(drive / "Many" / name) << name;
        paths += (drive / "Many" / name).string() + '\0';
        trashed += (drive / "Trash" / name).string() + '\0';
    }
    EXPECT_EQ(titles({}, paths), Titles{"QV: Move To Trash"});
    answer({"pick", "QV: Move To Trash", "-"}, paths);
    ASSERT_TRUE(isOnDriveSoon("Trash/" + *names.rbegin(), kLong));
    EXPECT_EQ(namesIn("Trash"), names);
    EXPECT_TRUE(fs::is_empty(drive / "Many"));
    EXPECT_EQ(requestsSoon("ext_movetotrash").size(), 1U);
    answer({"pick", "QV: Restore", "-"}, trashed);
    ASSERT_TRUE(isOnDriveSoon("Many/" + *names.rbegin(), kLong));
    EXPECT_EQ(namesIn("Many"), names);
    EXPECT_TRUE(fs::is_empty(drive / "Trash"));
    for (const std::string& name : {*names.begin(), *names.rbegin(), std::string("item 77")}) {
        EXPECT_EQ(Tests::contentsOf(drive / "Many" / name), name);
    }
}

TEST_F(Finder, LosesNothingWhenTheHostIsKilledAtItsWork) {
    std::string paths;
    std::set<std::string> names;
    for (int i = 0; i < 5'000; ++i) {
        names.insert(std::to_string(i));
        paths += makeFile("Many/" + std::to_string(i)) + '\0';
    }
    answer({"pick", "QV: Move To Trash", "-"}, paths);
    ASSERT_TRUE(
        Tests::waitUntil([&] { return isOnDrive("Trash") && !fs::is_empty(drive / "Trash"); }));
    host->signal(SIGKILL);
    EXPECT_TRUE(host->waitForExit());
    extension->signal(SIGKILL);
    EXPECT_TRUE(extension->waitForExit());
    std::set<std::string> trashedNames = namesIn("Trash");
    std::set<std::string> all = namesIn("Many");
    all.insert(trashedNames.begin(), trashedNames.end());
    EXPECT_EQ(all, names);
    start();
    std::string trashed;
    for (const std::string& name : trashedNames) {
        trashed += (drive / "Trash" / name).string() + '\0';
    }
    answer({"pick", "QV: Restore", "-"}, trashed);
    EXPECT_TRUE(Tests::waitUntil([&] { return namesIn("Many") == names; }));
}

TEST_F(Finder, KeepsItsRecordsFromASecondHost) {
    makeFile("a.txt");
    answer({"pick", "QV: Move To Trash", "a.txt"});
    ASSERT_TRUE(isOnDriveSoon("Trash/a.txt"));
    Tests::Process second(HOST_PROGRAM, {"--drive", drive.string()}, folders.root() / "second.out",
                          folders.root() / "second.err");
    EXPECT_EQ(second.waitForExit(), 1);
    makeFile("b.txt");
    answer({"pick", "QV: Move To Trash", "b.txt"});
    ASSERT_TRUE(isOnDriveSoon("Trash/b.txt"));
    host->signal(SIGKILL);
    EXPECT_TRUE(host->waitForExit());
    extension->signal(SIGKILL);
    EXPECT_TRUE(extension->waitForExit());
    start();
    answer({"pick", "QV: Restore", "Trash/a.txt", "Trash/b.txt"});
    EXPECT_TRUE(isOnDriveSoon("b.txt"));
    EXPECT_TRUE(isOnDrive("a.txt"));
}

TEST_F(Finder, TakesBracketsForPartOfAName) {
    makeFile("a");
    makeFile("[a]");
    answer({"pick", "QV: Move To Trash", "[a]"});
    EXPECT_TRUE(isOnDriveSoon("Trash/[a]"));
    EXPECT_TRUE(isOnDrive("a"));
}

TEST_F(Finder, DoesNothingToTheFolderWhenNoPathsCome) {
    std::string command =
        "cd '" + drive.string() + "' && printf '' | " + FINDER_PROGRAM + " pick 'QV: Share'";
    Tests::Process shell("/bin/sh", {"-c", command}, folders.root() / "shell.out",
                         folders.root() / "shell.err");
    EXPECT_EQ(shell.waitForExit(), 1);
    EXPECT_NE(shell.errors().find("no paths came on standard input"), std::string::npos);
    EXPECT_EQ(requestsSoon("ext_share", 0).size(), 0U);
}

TEST_F(Finder, NeverWaitsForAStoppedHost) {
    makeFile("Docs/a.txt");
    host->signal(SIGSTOP);
    ASSERT_TRUE(host->waitForState('T'));
    Shell::FinderClient client;
    ASSERT_TRUE(client.waitUntilKnown(Tests::kPatience));
    const Shell::Place place{{(drive / "Docs/a.txt").string()}, (drive / "Docs").string()};
    const std::pair<Shell::MenuKind, const char*> commands[] = {
        {Shell::MenuKind::kItems,     "shareItem:"   },
        {Shell::MenuKind::kItems,     "showProps"    },
        {Shell::MenuKind::kItems,     "moveToTrash"  },
        {Shell::MenuKind::kContainer, "refreshFolder"},
        {Shell::MenuKind::kToolbar,   "emptyTrash"   },
    };
    // Far more than wait in the kernel for a host that does not take them.
    for (int i = 0; i < 1'000; ++i) {
        for (const auto& [kind, action] : commands) {
            ASSERT_EQ(client.run(kind, action, place, Tests::kPatience), Shell::Outcome::kDone);
        }
    }
}

TEST_F(Finder, GoesOnWithAStoppedHost) {
    makeFile("a.txt");
    std::string many;
    for (int i = 0; i < 5'000; ++i) {
        many += makeFile("Many/" + std::to_string(i)) + '\0';
    }
    host->signal(SIGSTOP);
    ASSERT_TRUE(host->waitForState('T'));
    EXPECT_EQ(titles({"a.txt"}).size(), 3U);
    EXPECT_EQ(titles({"--kind", "toolbar"}).size(), 5U);
    EXPECT_EQ(titles({}, many), Titles{"QV: Move To Trash"});
    answer({"pick", "QV: Share", "a.txt"});
    answer({"pick", "QV: Move To Trash"}, many);
    host->signal(SIGCONT);
    EXPECT_EQ(argumentOf("ext_share"), R"(["/a.txt"])");
    EXPECT_TRUE(Tests::waitUntil([&] { return fs::is_empty(drive / "Many"); }));
}

TEST_F(Finder, GivesUpOnAStoppedExtensionAndNothingIsDoneLater) {
    makeFile("a.txt");
    extension->signal(SIGSTOP);
    ASSERT_TRUE(extension->waitForState('T'));
    const auto finished = finder({"pick", "QV: Move To Trash", "--timeout", "300", "a.txt"});
    EXPECT_EQ(finished.status, 1);
    EXPECT_EQ(finished.errors,
              "quorvane-finder: the extension does not answer; nothing was done\n");
    extension->signal(SIGCONT);
    EXPECT_EQ(titles({"a.txt"}).size(), 3U); // it has come to what was asked after that
    EXPECT_EQ(requestsSoon("ext_movetotrash", 0).size(), 0U);
    EXPECT_TRUE(isOnDrive("a.txt"));
}

TEST_F(Finder, FindsAnExtensionThatWasStartedAgain) {
    extension->signal(SIGKILL);
    EXPECT_TRUE(extension->waitForExit());
    startExtensionAlone();
    EXPECT_EQ(titles({}).size(), 3U);
}

TEST_F(Finder, LosesTheExtensionWithItsHost) {
    host->signal(SIGTERM);
    EXPECT_EQ(host->waitForExit(), 0);
    EXPECT_EQ(extension->waitForExit(), 0);
    EXPECT_EQ(finder({"status"}).status, 1);
}

} // namespace
