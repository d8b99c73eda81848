#include "Platform/Finder/Workspace.h"

#include "Tests/Support/PrivateFolders.h"
#include "Tests/Support/Process.h"
#include "Tests/Support/ScopedVariable.h"

#include <cerrno>
#include <fstream>
#include <sys/wait.h>

namespace {

// A desktop whose opener writes down what it is asked to open.
class Workspace : public Tests::FolderTest {
  protected:
    void installOpener() {
        const auto opener = folders.root() / "xdg-open";
        std::ofstream(opener) << "#!/bin/sh\nprintf '%s' \"$1\" >'" << opened().string()
                              << ".part'\nmv '" << opened().string() << ".part' '"
                              << opened().string() << "'\n";
        std::filesystem::permissions(opener, std::filesystem::perms::owner_all);
    }
    std::filesystem::path opened() const { return folders.root() / "opened"; }
    bool waitUntilOpened() const {
        return Tests::waitUntil([&] { return std::filesystem::exists(opened()); });
    }
    static bool open(const char* path) {
        return NS::Workspace::sharedWorkspace()->openFile(
            NS::String::fromFileSystemRepresentation(path));
    }

    Tests::ScopedVariable path{"PATH", folders.root().string() + ":/usr/bin:/bin"};
};

TEST_F(Workspace, OpensAFolderWithTheDesktopsOpener) {
    installOpener();
    EXPECT_TRUE(open("/mnt/My \"Drive\"\n\xFF"));
    ASSERT_TRUE(waitUntilOpened());
    EXPECT_EQ(Tests::contentsOf(opened()), "/mnt/My \"Drive\"\n\xFF");
}

TEST_F(Workspace, LeavesNoChildToWaitFor) {
    installOpener();
    EXPECT_TRUE(open("/mnt"));
    errno = 0;
    EXPECT_EQ(::waitpid(-1, nullptr, WNOHANG), -1);
    EXPECT_EQ(errno, ECHILD);
    EXPECT_TRUE(waitUntilOpened());
}

TEST_F(Workspace, TellsWhenThereIsNoOpener) {
    path.put(folders.root().string());
    EXPECT_FALSE(open("/mnt"));
}

TEST_F(Workspace, OpensNothingForNil) {
    EXPECT_FALSE(NS::Workspace::sharedWorkspace()->openFile(nullptr));
}

} // namespace
