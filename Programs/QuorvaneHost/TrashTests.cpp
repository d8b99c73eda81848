#include "Programs/QuorvaneHost/Trash.h"

#include "Tests/Support/PrivateFolders.h"
#include "Tests/Support/Process.h"
#include "Tests/Support/ScopedOpenFiles.h"

#include <algorithm>
#include <csignal>
#include <fstream>
#include <map>
#include <optional>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace fs = std::filesystem;

namespace {

class TrashTest : public Tests::FolderTest {
  protected:
    TrashTest() { fs::create_directories(drive); }

    void makeFile(const std::string& path) const {
        const fs::path file = drive.string() + path;
        fs::create_directories(file.parent_path());
        std::ofstream(file) << path;
    }
    bool isThere(const std::string& path) const {
        return fs::symlink_status(drive.string() + path).type() != fs::file_type::not_found;
    }
    std::string contents(const std::string& path) const {
        return Tests::contentsOf(drive.string() + path);
    }
    // What an operation on one item comes to: where it is, or why it was refused.
    static std::string outcome(const Trash::Results& results) {
        return results.front().reason.empty() ? results.front().to : results.front().reason;
    }
    Trash open(Trash::Step step = [] {}) const { return {tree, records, std::move(step)}; }

    fs::path drive = folders.root() / "drive";
    std::string records = (folders.root() / "trash.log").string();
    DriveTree tree = [this] {
        fs::create_directories(drive);
        return DriveTree(drive.string());
    }();
};

TEST_F(TrashTest, TakesAnItemAndGivesItBack) {
    makeFile("/Docs/a.txt");
    EXPECT_EQ(outcome(open().moveIn({"/Docs/a.txt"})), "/Trash/a.txt");
    EXPECT_FALSE(isThere("/Docs/a.txt"));
    EXPECT_EQ(contents("/Trash/a.txt"), "/Docs/a.txt");
    EXPECT_EQ(outcome(open().restore({"/Trash/a.txt"})), "/Docs/a.txt");
    EXPECT_EQ(contents("/Docs/a.txt"), "/Docs/a.txt");
    EXPECT_FALSE(isThere("/Trash/a.txt"));
}

TEST_F(TrashTest, KeepsItemsOfOneNameApart) {
    makeFile("/a/x.txt");
    makeFile("/b/x.txt");
    Trash trash = open();
    const auto results = trash.moveIn({"/a/x.txt", "/b/x.txt"});
    EXPECT_EQ(results[0].to, "/Trash/x.txt");
    EXPECT_EQ(results[1].to, "/Trash/x 2.txt");
    EXPECT_EQ(outcome(trash.restore({"/Trash/x 2.txt"})), "/b/x.txt");
    EXPECT_EQ(contents("/b/x.txt"), "/b/x.txt");
}

TEST_F(TrashTest, KeepsWhatHasTakenAnItemsPlace) {
    makeFile("/a.txt");
    Trash trash = open();
    (void)trash.moveIn({"/a.txt"});
    std::ofstream(drive / "a.txt") << "new";
    EXPECT_EQ(outcome(trash.restore({"/Trash/a.txt"})), "/a 2.txt");
    EXPECT_EQ(contents("/a.txt"), "new");
    EXPECT_EQ(contents("/a 2.txt"), "/a.txt");
}

TEST_F(TrashTest, MakesFoldersAgainThatAreGone) {
    makeFile("/a/b/c.txt");
    Trash trash = open();
    (void)trash.moveIn({"/a/b/c.txt"});
    fs::remove_all(drive / "a");
    EXPECT_EQ(outcome(trash.restore({"/Trash/c.txt"})), "/a/b/c.txt");
}

TEST_F(TrashTest, GivesBackPartOfAFolder) {
    makeFile("/folder/inner/a.txt");
    makeFile("/folder/b.txt");
    Trash trash = open();
    (void)trash.moveIn({"/folder"});
    EXPECT_EQ(outcome(trash.restore({"/Trash/folder/inner/a.txt"})), "/folder/inner/a.txt");
    EXPECT_TRUE(isThere("/Trash/folder/b.txt"));
    EXPECT_EQ(outcome(trash.restore({"/Trash/folder/b.txt"})), "/folder/b.txt");
}

TEST_F(TrashTest, MovesALinkAndNotWhatItLeadsTo) {
    makeFile("/a.txt");
    fs::create_symlink("a.txt", drive / "link");
    EXPECT_EQ(outcome(open().moveIn({"/link"})), "/Trash/link");
    EXPECT_TRUE(isThere("/a.txt"));
    EXPECT_TRUE(fs::is_symlink(drive / "Trash/link"));
}

TEST_F(TrashTest, RemembersTheRealFolderOfAnItemBehindALink) {
    makeFile("/Docs/a.txt");
    fs::create_directory_symlink("Docs", drive / "link");
    Trash trash = open();
    (void)trash.moveIn({"/link/a.txt"});
    fs::remove(drive / "link");
    EXPECT_EQ(outcome(trash.restore({"/Trash/a.txt"})), "/Docs/a.txt");
}

TEST_F(TrashTest, RefusesFoldersThatStay) {
    fs::create_directories(drive / "Shared Folders");
    for (const char* const path : {"/", "/Trash", "/Trash/", "/Shared Folders", "//./Trash"}) {
        EXPECT_EQ(outcome(open().moveIn({path})), "this folder stays where it is") << path;
    }
}

TEST_F(TrashTest, RefusesWhatItHasAlready) {
    makeFile("/Trash/a");
    fs::create_directory_symlink("Trash", drive / "link");
    EXPECT_EQ(outcome(open().moveIn({"/Trash/a"})), "it is in the Trash already");
    EXPECT_EQ(outcome(open().moveIn({"/link/a"})), "it is in the Trash already");
}

TEST_F(TrashTest, RefusesWhatIsNotThere) {
    EXPECT_EQ(outcome(open().moveIn({"/missing"})), "there is no such item");
    EXPECT_EQ(outcome(open().restore({"/Trash/missing"})), "there is no such item");
    EXPECT_EQ(outcome(open().remove({"/Trash/missing"})), "there is no such item");
}

TEST_F(TrashTest, GoesOnAfterAnItemThatIsRefused) {
    makeFile("/a");
    const auto results = open().moveIn({"/missing", "/a", "relative"});
    EXPECT_EQ(results[1].to, "/Trash/a");
    EXPECT_FALSE(results[0].reason.empty());
    EXPECT_FALSE(results[2].reason.empty());
}

TEST_F(TrashTest, RefusesToGiveBackWhatItDoesNotKnow) {
    makeFile("/Trash/stray");
    makeFile("/a");
    EXPECT_EQ(outcome(open().restore({"/Trash/stray"})), "it is not known where it was");
    EXPECT_EQ(outcome(open().restore({"/a"})), "not in the Trash");
    EXPECT_EQ(outcome(open().restore({"/Trash"})), "not in the Trash");
}

TEST_F(TrashTest, DoesNotTakeAnotherItemOfTheNameForTheOneThatItKnows) {
    makeFile("/a");
    Trash trash = open();
    (void)trash.moveIn({"/a"});
    fs::rename(drive / "Trash/a", drive / "elsewhere"); // keeps its inode busy
    makeFile("/Trash/a");
    EXPECT_EQ(outcome(trash.restore({"/Trash/a"})), "it is not known where it was");
}

TEST_F(TrashTest, RemovesFromItselfOnly) {
    makeFile("/a");
    makeFile("/Trash/b/c");
    EXPECT_EQ(outcome(open().remove({"/a"})), "not in the Trash");
    EXPECT_EQ(outcome(open().remove({"/Trash"})), "not in the Trash");
    EXPECT_EQ(outcome(open().remove({"/Trash/b"})), "");
    EXPECT_TRUE(isThere("/a"));
    EXPECT_FALSE(isThere("/Trash/b"));
}

TEST_F(TrashTest, RemovesALinkAndNotWhatItLeadsTo) {
    makeFile("/a/b");
    fs::create_directories(drive / "Trash");
    fs::create_directory_symlink("../a", drive / "Trash/link");
    EXPECT_EQ(outcome(open().remove({"/Trash/link"})), "");
    EXPECT_TRUE(isThere("/a/b"));
    EXPECT_FALSE(isThere("/Trash/link"));
}

TEST_F(TrashTest, IsEmptiedWhole) {
    makeFile("/Trash/a/b/c");
    makeFile("/Trash/d");
    EXPECT_EQ(open().empty().size(), 2U);
    EXPECT_TRUE(fs::is_empty(drive / "Trash"));
}

TEST_F(TrashTest, IsMadeWhenItIsMissing) {
    EXPECT_TRUE(open().empty().empty());
    EXPECT_TRUE(fs::is_directory(drive / "Trash"));
}

TEST_F(TrashTest, IsRefusedWhereItIsNoFolder) {
    fs::create_directories(folders.root() / "outside");
    fs::create_directory_symlink(folders.root() / "outside", drive / "Trash");
    makeFile("/a");
    EXPECT_THROW((void)open().moveIn({"/a"}), Refusal);
    EXPECT_THROW((void)open().empty(), Refusal);
    EXPECT_TRUE(isThere("/a"));
}

TEST_F(TrashTest, TakesLongNamesThatCollide) {
    const std::string name(255, 'n');
    makeFile("/a/" + name);
    makeFile("/b/" + name);
    const auto results = open().moveIn({"/a/" + name, "/b/" + name});
    EXPECT_EQ(results[1].to, "/Trash/" + name.substr(2) + " 2");
}

TEST_F(TrashTest, TakesMoreItemsThanAProcessMayOpenFiles) {
    const Tests::ScopedOpenFiles usual(1'024);
    std::vector<std::string> paths;
    std::vector<std::string> trashed;
    for (int i = 0; i < 1'100; ++i) {
        paths.push_back("/many/" + std::to_string(i));
        trashed.push_back("/Trash/" + std::to_string(i));
        makeFile(paths.back());
    }
    Trash trash = open();
    (void)trash.moveIn(paths);
    EXPECT_TRUE(fs::is_empty(drive / "many"));
    (void)trash.restore(trashed);
    EXPECT_TRUE(fs::is_empty(drive / "Trash"));
    EXPECT_EQ(contents("/many/1099"), "/many/1099");
}

TEST_F(TrashTest, TakesManyItemsOfOneName) {
    std::vector<std::string> paths;
    std::vector<std::string> trashed{"/Trash/x"};
    for (int i = 1; i <= 300; ++i) {
        paths.push_back("/" + std::to_string(i) + "/x");
        trashed.push_back("/Trash/x " + std::to_string(i + 1));
        makeFile(paths.back());
    }
    trashed.pop_back();
    Trash trash = open();
    EXPECT_EQ(trash.moveIn(paths).back().to, trashed.back());
    EXPECT_EQ(trash.restore(trashed).back().to, "/300/x");
    EXPECT_EQ(contents("/300/x"), "/300/x");
}

TEST_F(TrashTest, GivesBackItemsOfOneOriginApart) {
    Trash trash = open();
    for (int i = 0; i < 3; ++i) {
        makeFile("/a.txt");
        (void)trash.moveIn({"/a.txt"});
    }
    const auto results = trash.restore({"/Trash/a 2.txt", "/Trash/a.txt", "/Trash/a 3.txt"});
    EXPECT_EQ(results[0].to, "/a.txt");
    EXPECT_EQ(results[1].to, "/a 2.txt");
    EXPECT_EQ(results[2].to, "/a 3.txt");
}

TEST_F(TrashTest, MovesAnItemOnceThatIsNamedTwice) {
    makeFile("/a");
    Trash trash = open();
    const auto results = trash.moveIn({"/a", "/a"});
    EXPECT_EQ(results[0].to, "/Trash/a");
    EXPECT_EQ(results[1].reason, "there is no such item");
    EXPECT_EQ(outcome(trash.restore({"/Trash/a"})), "/a");
}

TEST_F(TrashTest, KeepsBytesOfAllKindsInNames) {
    std::vector<std::string> paths;
    std::vector<std::string> trashed;
    for (const std::string name : {" a  b ", "\"quotes'", "two\nlines", "50%", "a:b", "\u00e9",
                                   "e\u0301", "\xFF\xFE", "\U0001F600", "-rf", "\\", "..."}) {
        paths.push_back("/Docs/" + name);
        trashed.push_back("/Trash/" + name);
        makeFile(paths.back());
    }
    EXPECT_EQ(open().moveIn(paths).size(), paths.size());
    EXPECT_TRUE(fs::is_empty(drive / "Docs"));
    (void)open().restore(trashed);
    for (const std::string& path : paths) {
        EXPECT_EQ(contents(path), path);
    }
}

TEST_F(TrashTest, TakesPathsThatAreLongerThanTheSystems) {
    std::string folder;
    for (int i = 0; i < 20; ++i) {
        folder += "/" + std::string(220, 'f');
    }
    const DriveEntry entry{tree.madeFolderAt(folder), "item", folder + "/item"};
    std::ofstream(entry.systemPath()) << "far down";
    EXPECT_EQ(outcome(open().moveIn({entry.path})), "/Trash/item");
    EXPECT_EQ(contents("/Trash/item"), "far down");
    EXPECT_EQ(outcome(open().restore({"/Trash/item"})), entry.path);
    EXPECT_EQ(Tests::contentsOf(entry.systemPath()), "far down");
}

TEST_F(TrashTest, TakesNoLinkForAWayIntoItself) {
    std::string folder;
    for (int i = 0; i < 20; ++i) {
        folder += "/" + std::string(220, 'f');
    }
    const DriveEntry entry{tree.madeFolderAt("/Docs" + folder), "item", {}};
    std::ofstream(entry.systemPath()) << "kept";
    fs::create_directories(drive / "Trash");
    fs::create_directory_symlink("../Docs", drive / "Trash/link");
    EXPECT_EQ(outcome(open().remove({"/Trash/link" + folder + "/item"})),
              "the path is too long to be followed through symbolic links");
    EXPECT_EQ(Tests::contentsOf(entry.systemPath()), "kept");
}

TEST_F(TrashTest, RemovesFoldersOfAnyDepth) {
    std::string folder = "/Trash";
    for (int i = 0; i < 1'500; ++i) {
        folder += "/d";
    }
    (void)tree.madeFolderAt(folder);
    EXPECT_EQ(outcome(open().remove({"/Trash/d"})), "");
    EXPECT_TRUE(fs::is_empty(drive / "Trash"));
}

TEST_F(TrashTest, RemembersItsItemsWhileItIsMissingAsAWhole) {
    makeFile("/a");
    (void)open().moveIn({"/a"});
    fs::rename(drive / "Trash", folders.root() / "unmounted");
    (void)open();
    fs::rename(folders.root() / "unmounted", drive / "Trash");
    EXPECT_EQ(outcome(open().restore({"/Trash/a"})), "/a");
}

TEST_F(TrashTest, ForgetsItemsThatAreGone) {
    makeFile("/a");
    makeFile("/b");
    (void)open().moveIn({"/a", "/b"});
    fs::remove(drive / "Trash/a");
    (void)open();
    EXPECT_EQ(Tests::contentsOf(records).find("+ a "), std::string::npos);
    EXPECT_NE(Tests::contentsOf(records).find("+ b "), std::string::npos);
}

TEST_F(TrashTest, LeavesWhatItCannotRecordAndTellsOfTheRest) {
    std::vector<std::string> paths;
    for (int i = 0; i < 600; ++i) {
        paths.push_back("/many/" + std::to_string(i));
        makeFile(paths.back());
    }
    // The disk is full, for a process of its own, after the records of the first batch.
    const pid_t child = ::fork();
    if (child == 0) {
        Trash trash = open();
        const rlimit most{10'000, 10'000};
        (void)std::signal(SIGXFSZ, SIG_IGN);
        (void)::setrlimit(RLIMIT_FSIZE, &most);
        const auto results = trash.moveIn(paths);
        const auto done = std::ranges::count(results, "", &Trash::Result::reason);
        ::_exit(results.size() == 600 && done == 400 ? 0 : 1);
    }
    int status = 1;
    EXPECT_EQ(::waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
    EXPECT_TRUE(isThere("/Trash/399"));
    EXPECT_TRUE(isThere("/many/400"));
    EXPECT_EQ(outcome(open().restore({"/Trash/399"})), "/many/399");
}

// Ends a process of its own at the n-th step of what it does, for every n that there is.
class KilledTrash : public TrashTest {
  protected:
    using Work = void (*)(Trash& trash);

    void makeFiles() const {
        for (const auto& [path, trashed] : files) {
            makeFile(path);
        }
    }
    // False when the work came to its end before the step.
    bool killAt(int step, Work work) const {
        const pid_t child = ::fork();
        if (child == 0) {
            int steps = 0;
            Trash trash = open([&] {
                if (steps++ == step) {
                    (void)::kill(::getpid(), SIGKILL);
                }
            });
            work(trash);
            ::_exit(0);
        }
        int status = 0;
        EXPECT_EQ(::waitpid(child, &status, 0), child);
        return WIFSIGNALED(status);
    }
    // Every file is at its origin, or in the Trash from where it comes back.
    void expectNothingLost() const {
        Trash trash = open();
        for (const auto& [path, trashed] : files) {
            if (!isThere(path)) {
                ASSERT_TRUE(isThere(trashed)) << path;
                EXPECT_EQ(outcome(trash.restore({trashed})), path);
            } else {
                EXPECT_FALSE(isThere(trashed)) << path;
            }
            EXPECT_EQ(contents(path), path);
        }
    }
    static void moveAll(Trash& trash) { (void)trash.moveIn({"/a", "/Docs/b", "/Docs/c"}); }
    static void restoreAll(Trash& trash) {
        (void)trash.restore({"/Trash/a", "/Trash/b", "/Trash/c"});
    }

    const std::map<std::string, std::string> files{
        {"/a",      "/Trash/a"},
        {"/Docs/b", "/Trash/b"},
        {"/Docs/c", "/Trash/c"}
    };
};

TEST_F(KilledTrash, LosesNothingOnTheWayIn) {
    makeFiles();
    int steps = 0;
    while (killAt(steps, &moveAll)) {
        expectNothingLost();
        ++steps;
    }
    EXPECT_GT(steps, 3);
}

TEST_F(KilledTrash, LosesNothingWhereverItsLogWasCutOff) {
    makeFiles();
    ASSERT_TRUE(killAt(1, &moveAll)); // recorded, and none of them moved
    const std::string log = Tests::contentsOf(records);
    ASSERT_EQ(std::ranges::count(log, '\n'), 3);
    for (std::size_t length = 0; length <= log.size(); ++length) {
        std::ofstream(records, std::ios::trunc) << log.substr(0, length);
        expectNothingLost();
        Trash trash = open();
        moveAll(trash);
        restoreAll(trash);
        expectNothingLost();
    }
}

TEST_F(KilledTrash, LosesNothingOnTheWayBack) {
    int steps = 0;
    for (bool killed = true; killed; ++steps) {
        makeFiles();
        Trash trash = open();
        moveAll(trash);
        killed = killAt(steps, &restoreAll);
        expectNothingLost();
    }
    EXPECT_GT(steps, 6);
}

TEST_F(KilledTrash, LosesNothingElseWhenItIsEmptied) {
    int steps = 0;
    for (bool killed = true; killed; ++steps) {
        makeFiles();
        Trash trash = open();
        moveAll(trash);
        makeFile("/kept");
        killed = killAt(steps, [](Trash& t) { (void)t.remove({"/Trash/a", "/Trash/b"}); });
        EXPECT_TRUE(isThere("/kept"));
        EXPECT_EQ(outcome(open().restore({"/Trash/c"})), "/Docs/c");
        (void)open().empty();
    }
    EXPECT_GT(steps, 2);
}

TEST_F(KilledTrash, KeepsWhatAHalfRemovedFolderStillHolds) {
    int steps = 0;
    for (bool killed = true; killed; ++steps) {
        makeFile("/folder/a/b");
        makeFile("/folder/c");
        (void)open().moveIn({"/folder"});
        killed = killAt(steps, [](Trash& trash) { (void)trash.empty(); });
        if (killed && isThere("/Trash/folder")) {
            EXPECT_EQ(outcome(open().restore({"/Trash/folder"})), "/folder") << steps;
            fs::remove_all(drive / "folder");
        }
        EXPECT_TRUE(fs::is_empty(drive / "Trash"));
    }
    EXPECT_GT(steps, 5);
}

} // namespace
