#include "FileManagers/CloudProvider/Account.h"

#include <gtest/gtest.h>

namespace {

// As who puts "file://" before it reads it.
std::string readBack(const std::string& folder) {
    const std::string uri = "file://" + FileManagers::accountPath(folder);
    const FileManagers::OwnedObject<GFile> file(g_file_new_for_uri(uri.c_str()));
    const FileManagers::OwnedText path(g_file_get_path(file.get()));
    return path ? path.get() : "none";
}

TEST(AccountPath, IsTheFolderAsItIsWhereThatCanBe) {
    EXPECT_EQ(FileManagers::accountPath("/mnt/My Drive é & co"), "/mnt/My Drive é & co");
}

TEST(AccountPath, IsReadBackWhateverTheFolderIsCalled) {
    for (const char* const folder :
         {"/mnt/My Drive é", "/mnt/100%", "/mnt/a%20b", "/mnt/a#b?c", "/mnt/a\nb", "/mnt/\xFF é"}) {
        EXPECT_EQ(readBack(folder), folder);
        EXPECT_TRUE(g_utf8_validate(FileManagers::accountPath(folder).c_str(), -1, nullptr));
    }
}

} // namespace
