#include "Programs/Finder/Arguments.h"

#include "Tests/Support/PrivateFolders.h"

#include <fstream>

namespace fs = std::filesystem;

namespace {

using Shell::MenuKind;

class Arguments : public Tests::FolderTest {
  protected:
    Arguments() : before_(fs::current_path()) {
        fs::create_directories(folders.root() / "docs/inner");
        std::ofstream(folders.root() / "docs/a") << "a";
        fs::create_symlink("nowhere", folders.root() / "docs/broken");
        fs::current_path(folders.root());
    }
    ~Arguments() override { fs::current_path(before_); }

    std::string inRoot(const char* path) const { return (folders.root() / path).string(); }
    static MenuRequest from(std::vector<std::string> paths) {
        MenuArguments arguments;
        // Of a kind that leaves standard input alone, where a test has no say.
        arguments.kind = paths.empty() ? std::optional(MenuKind::kContainer) : std::nullopt;
        arguments.paths = std::move(paths);
        return menuRequestFrom(arguments);
    }
    static std::string errorOf(std::vector<std::string> paths) {
        try {
            (void)from(std::move(paths));
        } catch (const UserError& error) {
            return error.what();
        }
        return "none";
    }

  private:
    fs::path before_;
};

TEST_F(Arguments, WithPathsAskForTheMenuOfItems) {
    const MenuRequest request = from({"docs/a", inRoot("docs/inner")});
    EXPECT_EQ(request.kind, MenuKind::kItems);
    EXPECT_EQ(request.place.items,
              (std::vector<std::string>{inRoot("docs/a"), inRoot("docs/inner")}));
}

TEST_F(Arguments, WithPathsMeanTheFolderOfTheFirst) {
    EXPECT_EQ(from({"docs/inner/"}).place.target, inRoot("docs"));
    EXPECT_EQ(from({"/etc"}).place.target, "/");
    EXPECT_EQ(from({"/"}).place.target, "/");
    EXPECT_TRUE(fs::equivalent(from({"docs/."}).place.target, folders.root()));
    EXPECT_TRUE(fs::equivalent(from({"docs/inner/.."}).place.target, folders.root()));
}

TEST_F(Arguments, WithoutPathsMeanTheCurrentFolder) {
    const MenuRequest request = from({});
    EXPECT_EQ(request.kind, MenuKind::kContainer);
    EXPECT_TRUE(fs::equivalent(request.place.target, folders.root()));
}

TEST_F(Arguments, KeepTheKindAndTheTargetThatAreGiven) {
    const MenuRequest request = menuRequestFrom({MenuKind::kToolbar, "docs", {"docs/a"}, false});
    EXPECT_EQ(request.kind, MenuKind::kToolbar);
    EXPECT_EQ(request.place.target, inRoot("docs"));
}

TEST_F(Arguments, MayNameALinkThatLeadsNowhere) {
    EXPECT_EQ(from({"docs/broken"}).place.items.front(), inRoot("docs/broken"));
}

TEST_F(Arguments, MustNameWhatExists) {
    EXPECT_EQ(errorOf({"docs/a", "docs/missing"}), "no such file or folder: docs/missing");
    EXPECT_EQ(errorOf({"docs/a/below"}), "no such file or folder: docs/a/below");
    EXPECT_EQ(errorOf({""}), "a path is empty, or holds a NUL");
    EXPECT_THROW(menuRequestFrom({MenuKind::kToolbar, "missing", {}, false}), UserError);
}

TEST_F(Arguments, MayNameAFolderThatIsNoLongerShownBecauseItIsGone) {
    EXPECT_EQ(absolutePath("gone"), inRoot("gone"));
}

} // namespace
