#include "Shell/Client/GatheredPaths.h"

#include <gtest/gtest.h>
#include <utility>

namespace {

using namespace std::string_literals;

std::string bytesOf(const Shell::GatheredPaths& paths) {
    std::string bytes(paths.size(), '?');
    paths.copyTo(bytes.data());
    return bytes;
}

TEST(GatheredPaths, AreNoneAtFirst) {
    EXPECT_EQ(bytesOf({}), "");
}

TEST(GatheredPaths, HaveANULBehindEach) {
    const std::string path = "/d/a";
    Shell::GatheredPaths paths;
    paths.add(path);
    paths.addCopy("/d/b");
    EXPECT_EQ(bytesOf(paths), "/d/a\0/d/b\0"s);
}

TEST(GatheredPaths, MayBeOfOtherFoldersThanTheirItemsAreGivenIn) {
    const std::string a = "/link/a";
    const std::string b = "/link/b c";
    Shell::GatheredPaths paths;
    paths.add("/d/", a, 6);
    paths.add("/d/", b, 6);
    paths.add("/e/", a, 6);
    paths.addCopy("/f");
    paths.add("/e/", b, 6);
    EXPECT_EQ(bytesOf(paths), "/d/a\0/d/b c\0/e/a\0/f\0/e/b c\0"s);
}

TEST(GatheredPaths, StayWhenTheyAreMoved) {
    Shell::GatheredPaths paths;
    for (int i = 0; i < 100; ++i) {
        paths.addCopy("/" + std::to_string(i)); // short enough to lie within its own object
    }
    const std::string bytes = bytesOf(paths);
    const Shell::GatheredPaths moved = std::move(paths);
    EXPECT_EQ(bytesOf(moved), bytes);
}

} // namespace
