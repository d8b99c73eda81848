#include "Programs/QuorvaneHost/ShareLinks.h"

#include "Programs/QuorvaneHost/DriveTree.h"
#include "Tests/Support/PrivateFolders.h"
#include "Tests/Support/Process.h"

#include <fstream>

namespace fs = std::filesystem;

namespace {

class ShareLinksTest : public Tests::FolderTest {
  protected:
    ShareLinks::Link linkTo(const std::string& path) const {
        return ShareLinks(folder.string()).linkTo(path);
    }

    fs::path folder = folders.root() / "Links";
};

TEST_F(ShareLinksTest, AreKeptInAFileForEachItem) {
    const ShareLinks::Link link = linkTo("/Docs/a b.txt");
    EXPECT_EQ(fs::path(link.file).parent_path(), folder);
    EXPECT_EQ(Tests::contentsOf(link.file),
              "[InternetShortcut]\nURL=" + link.url + "\n# /Docs/a%20b.txt\n");
}

TEST_F(ShareLinksTest, StayTheSameForAnItem) {
    const std::string url = linkTo("/a").url;
    EXPECT_EQ(linkTo("/a").url, url);
    EXPECT_NE(linkTo("/b").url, url);
}

TEST_F(ShareLinksTest, TellNothingOfTheItem) {
    EXPECT_EQ(linkTo("/secret").url.find("secret"), std::string::npos);
}

TEST_F(ShareLinksTest, AreMadeForNamesOfAnyBytes) {
    const std::string name = "/" + std::string(255, '\xFF');
    const ShareLinks::Link link = linkTo(name);
    EXPECT_TRUE(fs::exists(link.file));
    EXPECT_EQ(linkTo("/a\nURL=https://elsewhere.example/").url.find("elsewhere"),
              std::string::npos);
}

TEST_F(ShareLinksTest, AreMadeAgainWhereTheirFileIsDamaged) {
    const ShareLinks::Link link = linkTo("/a");
    std::ofstream(link.file, std::ios::trunc) << "[Intern";
    const std::string again = linkTo("/a").url;
    EXPECT_FALSE(again.empty());
    EXPECT_EQ(linkTo("/a").url, again);
}

TEST_F(ShareLinksTest, AreRefusedWhereTheyCannotBeKept) {
    std::ofstream(folder) << "a file";
    EXPECT_THROW((void)linkTo("/a"), Refusal);
}

} // namespace
