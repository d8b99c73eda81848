#include "Platform/Foundation/FileFolder.h"

#include "Platform/Foundation/FileManager.h"
#include "Platform/Foundation/Testing/MemoryFileManager.h"
#include "Tests/Support/PrivateFolders.h"

#include <filesystem>
#include <fstream>
#include <memory>
#include <set>
#include <string>
#include <vector>

namespace {

namespace fs = std::filesystem;

std::set<std::string> namesOf(const NS::FileFolder& folder) {
    std::set<std::string> names;
    for (const NS::Ref<NS::Object>& name : folder.names()) {
        names.insert(static_cast<const NS::String&>(*name).fileSystemRepresentation());
    }
    return names;
}

// A folder of the file system.
class FileFolder : public Tests::FolderTest {
  protected:
    FileFolder() { fs::create_directory(root); }

    void put(const std::string& name) const { std::ofstream(root / name) << "file"; }
    std::unique_ptr<NS::FileFolder> open() const { return open(root); }
    std::unique_ptr<NS::FileFolder> open(const fs::path& path) const {
        return NS::FileManager::defaultManager().folderAtPath(*text(path.string()));
    }
    static NS::Ref<NS::String> text(const std::string& bytes) {
        return NS::String::fromFileSystemRepresentation(bytes);
    }

    const fs::path root = folders.root() / "folder";
};

TEST_F(FileFolder, HasTheNamesThatTheFileManagerLists) {
    put("a b");
    put(".hidden");
    put("\xFF");
    fs::create_directories(root / "sub" / "deep");
    const auto folder = open();
    EXPECT_EQ(namesOf(*folder), (std::set<std::string>{"a b", ".hidden", "\xFF", "sub"}));
    EXPECT_TRUE(folder->names().isEqual(
        NS::FileManager::defaultManager().contentsOfDirectoryAtPath(*text(root.string())).get()));
}

TEST_F(FileFolder, IsThereOnlyWhereAFolderCanBeRead) {
    put("file");
    EXPECT_FALSE(open(root / "absent"));
    EXPECT_FALSE(open(root / "file"));
    EXPECT_FALSE(open(""));
}

TEST_F(FileFolder, TellsTheCreationTimesThatTheFileManagerTells) {
    put("file");
    fs::create_directory(root / "sub");
    fs::create_symlink("nowhere", root / "link");
    const auto folder = open();
    for (const char* const name : {"file", "sub", "link"}) {
        const auto attributes =
            NS::FileManager::defaultManager().attributesOfItemAtPath(*text((root / name).string()));
        EXPECT_EQ(folder->creationTimeOfItem(*text(name)),
                  attributes->creationDate->timeIntervalSinceReferenceDate())
            << name;
    }
}

TEST_F(FileFolder, RemovesEntriesOfEveryKind) {
    put("file");
    put("\xFF");
    fs::create_directories(root / "sub" / "deep");
    put("sub/deep/file");
    fs::create_directory(folders.root() / "kept");
    std::ofstream(folders.root() / "kept" / "file") << "kept";
    fs::create_directory_symlink(folders.root() / "kept", root / "link");
    const auto folder = open();
    for (const char* const name : {"file", "\xFF", "sub", "link"}) {
        EXPECT_TRUE(folder->removeItem(*text(name))) << name;
    }
    EXPECT_TRUE(fs::is_empty(root));
    EXPECT_TRUE(fs::exists(folders.root() / "kept" / "file"));
}

TEST_F(FileFolder, KnowsNothingOfWhatIsNoEntryOfIt) {
    put("file");
    std::ofstream(folders.root() / "beside") << "beside";
    fs::create_directory(root / "sub");
    put("sub/file");
    const auto folder = open();
    for (const std::string& name :
         {std::string("absent"), std::string(), std::string("."), std::string(".."),
          std::string("../beside"), std::string("sub/file"), (root / "file").string(),
          std::string("file\0x", 6), std::string(300, 'n')}) {
        EXPECT_FALSE(folder->creationTimeOfItem(*text(name))) << name;
        EXPECT_FALSE(folder->removeItem(*text(name))) << name;
    }
    EXPECT_TRUE(fs::exists(root / "file"));
    EXPECT_TRUE(fs::exists(root / "sub" / "file"));
    EXPECT_TRUE(fs::exists(folders.root() / "beside"));
}

TEST_F(FileFolder, StaysTheOneThatItWas) {
    put("file");
    const auto folder = open();
    fs::rename(root, folders.root() / "moved");
    fs::create_directory(root);
    put("file");
    EXPECT_TRUE(folder->removeItem(*text("file")));
    EXPECT_TRUE(fs::exists(root / "file"));
    EXPECT_FALSE(fs::exists(folders.root() / "moved" / "file"));
}

// One of a file manager that knows paths only.
TEST(FileFolderByPaths, AsksForThePathsOfItsEntries) {
    NS::MemoryFileManager files;
    files.addFolder("/logs");
    files.addFile("/logs/a", 7);
    const auto folder = files.folderAtPath(*NS::str("/logs/"));
    EXPECT_EQ(namesOf(*folder), std::set<std::string>{"a"});
    EXPECT_EQ(folder->creationTimeOfItem(*NS::str("a")), 7);
    EXPECT_EQ(folder->creationTimeOfItem(*NS::str("b")), std::nullopt);
    EXPECT_TRUE(folder->removeItem(*NS::str("a")));
    EXPECT_FALSE(files.folderAtPath(*NS::str("/absent")));
    EXPECT_EQ(files.takeAccesses(),
              (std::vector<std::string>{"list /logs", "attributes /logs/a", "attributes /logs/b",
                                        "remove /logs/a", "list /absent"}));
}

} // namespace
