#include "Shell/Client/WatchedFolders.h"

#include "Tests/Support/PrivateFolders.h"

#include <filesystem>
#include <fstream>
#include <string>
#include <utility>

namespace {

using Where = Shell::Placing::Where;

// Items in folders of all kinds, mostly beside the one before.
constexpr const char* kPaths[] = {
    "@/data/drive/a",
    "@/data/drive/b",
    "@/data/drive/docs",
    "@/data/drive/docs/",
    "@/data/drive/c",
    "@/data/drive/.",
    "@/data/drive/docs/new",
    "@/data/drive/docs/x",
    "@/data/drive/docs/../note.txt",
    "@/data/drive/out",
    "@/data/drive/out/a",
    "@/data/drive/out/b",
    "@/data/drive2/a",
    "@/data/drive2",
    "@/data/drive",
    "@/data/drive/",
    "@/link/a",
    "@/link/b",
    "@/link",
    "@/data/drive/self/a",
    "@/data/drive//d",
    "@/data/drive/e",
    "relative",
    "",
    "@/data/drive/\xFF",
    "@/data/drive/f",
    "@/data/drivel",
    "@/data/drive/out/real/a",
    "/usr",
    "/absent",
};

// Paths begin with "@", which stands for the test's own folder; "@" has
//   data/drive/ with docs/ and note.txt, data/drive2/, desk/real/,
//   link -> data/drive, desk/docs -> data/drive/docs, data/drive/out -> desk,
//   data/drive/self -> data/drive, data/drive/gone -> nothing.
class WatchedFolders : public Tests::FolderTest {
  protected:
    void SetUp() override {
        for (const char* const folder : {"data/drive/docs", "data/drive2", "desk/real"}) {
            std::filesystem::create_directories(root / folder);
        }
        std::ofstream(root / "data/drive/note.txt") << "note";
        link("data/drive", "link");
        link("data/drive/docs", "desk/docs");
        link("desk", "data/drive/out");
        link("data/drive", "data/drive/self");
        link("nothing", "data/drive/gone");
    }
    void link(const char* target, const char* name) {
        std::filesystem::create_symlink(root / target, root / name);
    }

    std::string full(const std::string& path) const {
        return path.starts_with('@') ? root.string() + path.substr(1) : path;
    }
    std::string brief(const Shell::Placing& placing) const {
        constexpr const char* kNames[] = {"nowhere", "outside", "beside", "watched", "inside"};
        std::string text = kNames[static_cast<std::size_t>(placing.where)];
        const bool isOwn = placing.path.starts_with(root.string());
        text += placing.path.empty() ? "" : isOwn ? " @" : " ";
        return text + (isOwn ? placing.path.substr(root.string().size()) : placing.path);
    }
    std::string item(const std::string& path) { return brief(placedItem(path)); }
    Shell::Placing placedItem(const std::string& path) {
        const std::vector<std::string> known = watched();
        return Shell::WatchedFolders(known).placeItem(full(path));
    }
    // Of many, each where it is placed, and as what it is added, which a harmful one is not.
    std::vector<std::string> items(const std::vector<std::string>& paths) {
        const std::vector<std::string> known = watched();
        Shell::WatchedFolders placing(known);
        std::vector<std::string> placed;
        placed.reserve(paths.size());
        for (const std::string& path : paths) {
            const std::string item = full(path);
            Shell::GatheredPaths added;
            const Where where =
                placing.addBesideLast(item, added) ? Where::kInside : placing.addItem(item, added);
            placed.push_back(brief({where, added.size() == 0 ? "" : textOf(added)}));
        }
        return placed;
    }
    // Of one path, without its NUL.
    static std::string textOf(const Shell::GatheredPaths& path) {
        std::string text(path.size(), '?');
        path.copyTo(text.data());
        EXPECT_EQ(text.find('\0'), text.size() - 1);
        return text.substr(0, text.size() - 1);
    }
    void expectItemsPlacedAsEach(std::vector<std::string> watchedFolders) {
        spellings = std::move(watchedFolders);
        const std::vector<std::string> paths(std::begin(kPaths), std::end(kPaths));
        std::vector<std::string> each;
        each.reserve(paths.size());
        for (const std::string& path : paths) {
            Shell::Placing placing = placedItem(path);
            if (Shell::Placing::isHarmful(placing.where)) {
                placing.path.clear();
            }
            each.push_back(brief(placing));
            EXPECT_EQ(items({path}), std::vector{each.back()}) << path;
        }
        EXPECT_EQ(items(paths), each) << testing::PrintToString(spellings);
    }
    std::string folder(const std::string& path) {
        const std::vector<std::string> known = watched();
        return brief(Shell::WatchedFolders(known).placeFolder(full(path)));
    }
    std::vector<std::string> watched() const {
        std::vector<std::string> paths;
        for (const std::string& path : spellings) {
            paths.push_back(full(path));
        }
        return paths;
    }

    const std::filesystem::path root = std::filesystem::canonical(folders.root());
    std::vector<std::string> spellings{"@/data/drive"};
};

TEST_F(WatchedFolders, HoldTheirItems) {
    EXPECT_EQ(item("@/data/drive/note.txt"), "inside @/data/drive/note.txt");
    EXPECT_EQ(item("@/data/drive/docs"), "inside @/data/drive/docs");
    EXPECT_EQ(item("@/data/drive/docs/new"), "inside @/data/drive/docs/new");
    EXPECT_EQ(item("@/desk/a"), "outside @/desk/a");
}

TEST_F(WatchedFolders, DoNotHoldThemselvesHoweverSpelled) {
    for (const char* const spelling :
         {"@/data/drive", "@/data/drive/", "@/data/drive//", "@/data/drive/.", "@/data/drive/./",
          "@/data/./drive", "@//data//drive", "@/data/drive/docs/..", "@/data/drive/docs/../",
          "@/link/", "@/link/.", "@/desk/docs/..", "@/data/drive/self/", "@/data/drive2/../drive",
          "@/data/drive/new/.."}) {
        EXPECT_EQ(item(spelling), "watched @/data/drive") << spelling;
    }
}

TEST_F(WatchedFolders, PlaceItemsOfOneFolderAsTheyPlaceEach) {
    expectItemsPlacedAsEach({"@/data/drive"});
    expectItemsPlacedAsEach({"@/link"});
    expectItemsPlacedAsEach({"@/link/docs"});
    expectItemsPlacedAsEach({"@/data/drive/docs"});
    expectItemsPlacedAsEach({"@/data/drive", "@/data/drive/docs"});
    expectItemsPlacedAsEach({"@/data", "@/data/drive/docs"});
    expectItemsPlacedAsEach({"@/data/drive/docs/new", "@/data"});
    expectItemsPlacedAsEach({"/"});
    expectItemsPlacedAsEach({"/absent"});
    expectItemsPlacedAsEach({"/usr"});
}

TEST_F(WatchedFolders, DoNotHoldWhatALinkInThemLeadsTo) {
    EXPECT_EQ(items({"@/data/drive/out/real/a"}),
              std::vector<std::string>{"outside @/desk/real/a"});
    EXPECT_EQ(folder("@/data/drive/out/real"), "outside @/desk/real");
}

TEST_F(WatchedFolders, DoNotHoldTheItemsOfTheRootFolder) {
    EXPECT_EQ(items({"/usr"}), std::vector<std::string>{"outside /usr"});
    spellings = {"/absent"};
    EXPECT_EQ(items({"/absent"}), std::vector<std::string>{"watched"});
    EXPECT_EQ(items({"/usr"}), std::vector<std::string>{"outside /usr"});
}

TEST_F(WatchedFolders, HoldItemsHoweverDeepWhereALinkLeadsToThem) {
    std::filesystem::create_directories(root / "data/drive/docs/deep");
    link("desk", "data/drive/docs/deep/out");
    spellings = {"@/link"};
    EXPECT_EQ(items({"@/link/docs/a"}), std::vector<std::string>{"inside @/link/docs/a"});
    EXPECT_EQ(items({"@/link/docs/deep/a"}), std::vector<std::string>{"inside @/link/docs/deep/a"});
    EXPECT_EQ(items({"@/link/docs/deep/out/a"}), std::vector<std::string>{"outside @/desk/a"});
    EXPECT_EQ(folder("@/link/docs/deep"), "inside @/link/docs/deep");
    EXPECT_EQ(folder("@/link/docs/deep/out"), "outside @/desk");
    EXPECT_EQ(folder("@/link/out/docs"), "inside @/link/docs");
}

TEST_F(WatchedFolders, PlaceNoItemWithANULBesideOthers) {
    const std::string cut("@/data/drive/b\0c", 16);
    EXPECT_EQ(
        items({"@/data/drive/a", cut, "@/data/drive/d"}),
        (std::vector<std::string>{"inside @/data/drive/a", "nowhere", "inside @/data/drive/d"}));
}

// Names are looked at several bytes at a time: whatever stands around it, none is passed over.
TEST_F(WatchedFolders, PlaceNoItemBesideOthersWhoseNameHoldsANULOrASlash) {
    for (std::size_t length = 2; length <= 40; ++length) {
        for (const char around : {'a', '\x01', '\x2E', '\x30', '\x80', '\xAF'}) {
            std::vector<std::string> given{"@/data/drive/a"};
            std::vector<std::string> expected{"inside @/data/drive/a"};
            for (std::size_t at = 1; at < length; ++at) {
                std::string name(length, around);
                name[0] = 'n';
                name[at] = '\0';
                given.push_back("@/data/drive/" + name);
                expected.emplace_back("nowhere");
            }
            ASSERT_EQ(items(given), expected) << length << " around " << static_cast<int>(around);
        }
    }
}

TEST_F(WatchedFolders, PlaceAnItemOfALongNameInTheFolderThatTheNameHasInIt) {
    for (const std::string name : {"b", "b-is-long", "b-is-longer-than-16"}) {
        EXPECT_EQ(items({"@/data/drive/a", "@/data/drive/out/" + name}),
                  (std::vector<std::string>{"inside @/data/drive/a", "outside @/desk/" + name}));
    }
}

TEST_F(WatchedFolders, AreNotHeldByALinkThatIsAnItem) {
    EXPECT_EQ(item("@/link"), "outside @/link");
    EXPECT_EQ(item("@/data/drive/self"), "inside @/data/drive/self");
    EXPECT_EQ(item("@/data/drive/gone"), "inside @/data/drive/gone");
}

TEST_F(WatchedFolders, AreReachedThroughLinks) {
    EXPECT_EQ(item("@/link/note.txt"), "inside @/data/drive/note.txt");
    EXPECT_EQ(item("@/desk/docs/a"), "inside @/data/drive/docs/a");
    EXPECT_EQ(item("@/link/self/self/note.txt"), "inside @/data/drive/note.txt");
    EXPECT_EQ(folder("@/desk/docs"), "inside @/data/drive/docs");
    EXPECT_EQ(folder("@/link"), "watched @/data/drive");
}

TEST_F(WatchedFolders, AreLeftThroughLinks) {
    EXPECT_EQ(item("@/data/drive/out/a"), "outside @/desk/a");
    EXPECT_EQ(folder("@/data/drive/out"), "outside @/desk");
    EXPECT_EQ(item("@/data/drive/../drive2/a"), "beside @/data/drive2/a");
}

TEST_F(WatchedFolders, AreToldInTheirOwnSpelling) {
    spellings = {"@/link"};
    EXPECT_EQ(item("@/data/drive/note.txt"), "inside @/link/note.txt");
    EXPECT_EQ(item("@/link/docs/a"), "inside @/link/docs/a");
    EXPECT_EQ(folder("@/data/drive"), "watched @/link");
    EXPECT_EQ(item("@/link"), "watched @/link");
    EXPECT_EQ(item("@/link2/a"), "beside @/link2/a");
    EXPECT_EQ(item("@/data/drive2/a"), "outside @/data/drive2/a");
}

TEST_F(WatchedFolders, AreApartFromWhatBeginsLikeThem) {
    EXPECT_EQ(item("@/data/drive2"), "beside @/data/drive2");
    EXPECT_EQ(item("@/data/drive2/a"), "beside @/data/drive2/a");
    EXPECT_EQ(folder("@/data/drive2"), "beside @/data/drive2");
    EXPECT_EQ(item("@/data/driv"), "outside @/data/driv");
}

TEST_F(WatchedFolders, MayBeMany) {
    spellings = {"@/data/drive", "@/data/drive2", "@/data/drive/docs"};
    EXPECT_EQ(item("@/data/drive2/a"), "inside @/data/drive2/a");
    EXPECT_EQ(item("@/data/drive/docs/a"), "inside @/data/drive/docs/a");
    EXPECT_EQ(item("@/data/drive/docs"), "watched @/data/drive/docs");
    EXPECT_EQ(item("@/data/drive3"), "beside @/data/drive3");
}

TEST_F(WatchedFolders, MayBeTheWholeFileSystem) {
    spellings = {"/"};
    EXPECT_EQ(item("/"), "watched /");
    EXPECT_EQ(item("/etc"), "inside /etc");
    EXPECT_EQ(folder("@/link"), "inside @/data/drive");
}

TEST_F(WatchedFolders, NeedNotExist) {
    spellings = {"@/away/drive"};
    EXPECT_EQ(item("@/away/drive/a"), "inside @/away/drive/a");
    EXPECT_EQ(item("@/away/drive/b/c"), "inside @/away/drive/b/c");
    EXPECT_EQ(item("@/away/./drive/"), "watched @/away/drive");
    EXPECT_EQ(item("@/away/drive/b/.."), "watched @/away/drive");
    EXPECT_EQ(item("@/away/drive2/a"), "beside @/away/drive2/a");
}

TEST_F(WatchedFolders, AreLookedAtAnewEachTime) {
    EXPECT_EQ(folder("@/new"), "outside @/new");
    link("data/drive", "new");
    EXPECT_EQ(folder("@/new"), "watched @/data/drive");
}

TEST_F(WatchedFolders, KeepNamesByteForByte) {
    for (const char* const name : {"a b", "a\nb", "a:b", "100%", "\"'", "\xF0\x9F\x90\x8B",
                                   "e\xCC\x81", "\xC3\xA9", "not \xFF utf-8", "..a", "...", " "}) {
        EXPECT_EQ(item("@/link/" + std::string(name)), "inside @/data/drive/" + std::string(name));
    }
    const std::string longest(255, 'n');
    EXPECT_EQ(item("@/link/" + longest), "inside @/data/drive/" + longest);
}

TEST_F(WatchedFolders, TakePathsThatTheSystemDoesNot) {
    std::string deep = "@/data/drive";
    while (deep.size() < 6000) {
        deep += "/folder";
    }
    EXPECT_EQ(item(deep), "inside " + deep);
    EXPECT_EQ(folder(deep), "inside " + deep);
    const std::string wide = "@/data/drive/" + std::string(300, 'w') + "/a";
    EXPECT_EQ(item(wide), "inside " + wide);
    link("loop", "loop");
    EXPECT_EQ(item("@/loop/a"), "outside @/loop/a");
}

TEST_F(WatchedFolders, DoNotKnowWhatIsNoAbsolutePath) {
    for (const std::string& path :
         {std::string(), std::string("note.txt"), std::string("./a"), std::string("~/a"),
          full("@/data/drive/note.txt") + std::string(1, '\0') + "a"}) {
        EXPECT_EQ(item(path), "nowhere") << path;
        EXPECT_EQ(folder(path), "nowhere") << path;
    }
}

} // namespace
