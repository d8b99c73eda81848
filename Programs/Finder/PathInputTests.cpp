#include "Programs/Finder/PathInput.h"

#include "Programs/Finder/Arguments.h"
#include "Tests/Support/PrivateFolders.h"

#include <array>
#include <fcntl.h>
#include <fstream>
#include <unistd.h>

namespace {

using Paths = std::vector<std::string>;

class PathInput : public Tests::FolderTest {
  protected:
    ~PathInput() override {
        for (const int descriptor : {input_, output_}) {
            if (descriptor >= 0) {
                ::close(descriptor);
            }
        }
    }

    int file(std::string_view contents) {
        const auto path = folders.root() / "input";
        std::ofstream(path) << contents;
        return input_ = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    }
    // A pipe that has brought something, and is kept open by its writer unless it ends here.
    int pipe(std::string_view contents, bool ends) {
        std::array<int, 2> ends_{};
        EXPECT_EQ(::pipe2(ends_.data(), O_CLOEXEC), 0);
        EXPECT_EQ(::write(ends_[1], contents.data(), contents.size()),
                  static_cast<ssize_t>(contents.size()));
        if (ends) {
            ::close(ends_[1]);
        } else {
            output_ = ends_[1];
        }
        return input_ = ends_[0];
    }

  private:
    int input_ = -1;
    int output_ = -1;
};

TEST_F(PathInput, IsSeparatedByNul) {
    EXPECT_EQ(pathsFrom(file(std::string_view("/a b\0c\nd\0\xFF\0", 11))),
              (Paths{"/a b", "c\nd", "\xFF"}));
}

TEST_F(PathInput, MayEndWithoutNul) {
    EXPECT_EQ(pathsFrom(file(std::string_view("a\0b", 3))), (Paths{"a", "b"}));
}

TEST_F(PathInput, KeepsAnEmptyPathForTheErrorThatItIs) {
    EXPECT_EQ(pathsFrom(file(std::string_view("a\0\0b\0", 5))), (Paths{"a", "", "b"}));
}

TEST_F(PathInput, MayBeEmpty) {
    EXPECT_EQ(pathsFrom(file("")), Paths());
}

TEST_F(PathInput, IsToldWhenItCannotBeRead) {
    const int folder = ::open("/", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    EXPECT_THROW(pathsFrom(folder), UserError);
    ::close(folder);
}

TEST_F(PathInput, IsTakenFromAFileOrAPipeThatBringsIt) {
    EXPECT_EQ(pathsFromPipe(file("a")), Paths{"a"});
}

TEST_F(PathInput, IsTakenFromAPipeThatBringsIt) {
    EXPECT_EQ(pathsFromPipe(pipe("a", true)), Paths{"a"});
}

TEST_F(PathInput, IsNotWaitedForOnAPipeThatIsMerelyOpen) {
    EXPECT_EQ(pathsFromPipe(pipe("", false)), Paths());
}

TEST_F(PathInput, IsNotTakenFromADevice) {
    const int device = ::open("/dev/zero", O_RDONLY | O_CLOEXEC);
    EXPECT_EQ(pathsFromPipe(device), std::nullopt);
    ::close(device);
    EXPECT_EQ(pathsFromPipe(-1), std::nullopt);
}

} // namespace
