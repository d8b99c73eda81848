#include "Programs/Inspect/Files.h"

#include "Programs/Inspect/InspectionError.h"
#include "Tests/Support/PrivateFolders.h"

#include <gtest/gtest.h>

#include <fstream>
#include <iterator>

#include <sys/stat.h>

namespace {

namespace fs = std::filesystem;

class Files : public Tests::FolderTest {
  protected:
    std::string path(const std::string& name) const { return folders.root() / "files" / name; }
    static std::string contents(const std::string& file) {
        return std::string(NS::charactersOf(Inspection::contentsOf(file)->bytes()));
    }
    static void write(const std::string& file, std::string_view text) {
        Inspection::writeContents(file, NS::bytesOf(text));
    }
    // Everything in the folder, hidden or not.
    std::size_t countOfFiles() const {
        const fs::directory_iterator all(folders.root() / "files");
        return static_cast<std::size_t>(std::distance(begin(all), end(all)));
    }
    static std::string mistake(const std::string& file) {
        try {
            write(file, "new");
        } catch (const Inspection::Error& error) {
            return error.what();
        }
        return "none";
    }
    void SetUp() override { fs::create_directory(folders.root() / "files"); }
};

TEST_F(Files, AreWrittenAndReplaced) {
    for (const std::string_view text : {"one", "", "another"}) {
        write(path("out"), text);
        EXPECT_EQ(contents(path("out")), text);
    }
    EXPECT_EQ(countOfFiles(), 1U);
}

TEST_F(Files, KeepTheirPermissions) {
    write(path("out"), "old");
    fs::permissions(path("out"), fs::perms::owner_read | fs::perms::owner_write);
    write(path("out"), "new");
    EXPECT_EQ(fs::status(path("out")).permissions(),
              fs::perms::owner_read | fs::perms::owner_write);
}

// Also where the folder, or being the superuser, would allow it.
TEST_F(Files, AreLeftAloneWhereTheirOwnerMadeThemReadOnly) {
    write(path("out"), "old");
    fs::create_symlink("out", path("link"));
    for (const mode_t mode : {0444U, 0464U, 0066U}) {
        ASSERT_EQ(chmod(path("out").c_str(), mode), 0);
        EXPECT_EQ(mistake(path("out")), "cannot write \"" + path("out") + "\": it is read-only");
        EXPECT_EQ(mistake(path("link")), "cannot write \"" + path("link") + "\": it is read-only");
    }
    fs::permissions(path("out"), fs::perms::owner_read | fs::perms::owner_write);
    EXPECT_EQ(contents(path("out")), "old");
    EXPECT_EQ(countOfFiles(), 2U);
}

// Who has the old file open goes on reading the old contents.
TEST_F(Files, AreReplacedByAnotherFile) {
    write(path("out"), "old");
    std::ifstream reader(path("out"));
    write(path("out"), "new");
    EXPECT_EQ(std::string(std::istreambuf_iterator<char>(reader), {}), "old");
}

TEST_F(Files, AreReplacedBehindALink) {
    write(path("out"), "old");
    fs::create_symlink("out", path("link"));
    write(path("link"), "new");
    EXPECT_TRUE(fs::is_symlink(path("link")));
    EXPECT_EQ(contents(path("out")), "new");
}

TEST_F(Files, AreLeftAloneWhereTheyCannotBeReplaced) {
    write(path("file"), "old");
    EXPECT_NE(mistake(folders.root() / "files").find("Is a directory"), std::string::npos);
    EXPECT_NE(mistake(path("file") + "/out").find("Not a directory"), std::string::npos);
    EXPECT_NE(mistake(path("none") + "/out").find("No such file"), std::string::npos);
    EXPECT_EQ(contents(path("file")), "old");
    EXPECT_EQ(countOfFiles(), 1U);
}

TEST_F(Files, AreNotPutInThePlaceOfAPipe) {
    ASSERT_EQ(mkfifo(path("pipe").c_str(), 0600), 0);
    std::fstream reader(path("pipe")); // for both directions, so that nobody waits
    write(path("pipe"), "new");
    std::string line(3, '?');
    reader.read(line.data(), 3);
    EXPECT_EQ(line, "new");
    EXPECT_TRUE(fs::is_fifo(path("pipe")));
}

} // namespace
