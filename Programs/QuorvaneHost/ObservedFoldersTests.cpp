#include "Programs/QuorvaneHost/ObservedFolders.h"

#include <gtest/gtest.h>

namespace {

using Folders = std::vector<std::string>;

TEST(ObservedFolders, BelongToTheirClient) {
    ObservedFolders observed;
    EXPECT_TRUE(observed.begin("one", "/b"));
    EXPECT_TRUE(observed.begin("one", "/a"));
    EXPECT_TRUE(observed.begin("two", "/a"));
    EXPECT_EQ(observed.foldersOf("one"), (Folders{"/a", "/b"}));
    EXPECT_EQ(observed.foldersOf("two"), Folders{"/a"});
    EXPECT_EQ(observed.foldersOf("three"), Folders{});
}

TEST(ObservedFolders, EndAsOftenAsTheyBegan) {
    ObservedFolders observed;
    (void)observed.begin("one", "/a");
    (void)observed.begin("one", "/a");
    EXPECT_TRUE(observed.end("one", "/a"));
    EXPECT_EQ(observed.foldersOf("one"), Folders{"/a"});
    EXPECT_TRUE(observed.end("one", "/a"));
    EXPECT_FALSE(observed.end("one", "/a"));
    EXPECT_FALSE(observed.end("two", "/a"));
}

TEST(ObservedFolders, GoWithTheirClient) {
    ObservedFolders observed;
    (void)observed.begin("one", "/a");
    (void)observed.begin("two", "/b");
    observed.forget("one");
    observed.forget("unknown");
    EXPECT_EQ(observed.foldersOf("one"), Folders{});
    EXPECT_EQ(observed.foldersOf("two"), Folders{"/b"});
}

TEST(ObservedFolders, AreNoMoreThanAPersonCanHaveOpen) {
    ObservedFolders observed;
    for (std::size_t i = 0; i < ObservedFolders::kMostFolders; ++i) {
        ASSERT_TRUE(observed.begin("one", "/same"));
    }
    EXPECT_FALSE(observed.begin("one", "/more"));
    EXPECT_TRUE(observed.begin("two", "/more"));
    EXPECT_TRUE(observed.end("one", "/same"));
    EXPECT_TRUE(observed.begin("one", "/more"));
}

} // namespace
