#include "Platform/Finder/Image.h"

#include "Tests/Support/PrivateFolders.h"
#include "Tests/Support/ScopedVariable.h"

#include <fstream>

namespace {

class Image : public Tests::FolderTest {
  protected:
    static void makeImage(const std::filesystem::path& data, const char* name) {
        const auto folder = data / "icons/hicolor/scalable/apps";
        std::filesystem::create_directories(folder);
        std::ofstream(folder / (std::string(name) + ".svg")) << "<svg/>";
    }
    static NS::RefPtr<NS::Image> named(const char* name) {
        return NS::Image::imageNamed(*NS::str(name));
    }
};

TEST_F(Image, IsFoundAmongTheProgramsResources) {
    const auto image = named("MainOnline");
    ASSERT_TRUE(image);
    EXPECT_EQ(image->name()->utf8(), "MainOnline");
    EXPECT_TRUE(std::filesystem::is_regular_file(image->path()->utf8()));
}

TEST_F(Image, IsFoundAmongTheUsersIcons) {
    makeImage(folders.data(), "Mine");
    ASSERT_TRUE(named("Mine"));
    EXPECT_EQ(named("Mine")->path()->utf8(),
              (folders.data() / "icons/hicolor/scalable/apps/Mine.svg").string());
}

TEST_F(Image, IsFoundAmongTheMachinesIcons) {
    const auto machine = folders.root() / "machine";
    makeImage(machine, "Shared");
    const Tests::ScopedVariable list("XDG_DATA_DIRS", "relative:/nowhere:" + machine.string());
    EXPECT_TRUE(named("Shared"));
}

TEST_F(Image, IsNilWhereThereIsNone) {
    EXPECT_FALSE(named("NoSuchImage"));
    EXPECT_FALSE(named(""));
    EXPECT_FALSE(named("../apps/MainOnline"));
}

} // namespace
