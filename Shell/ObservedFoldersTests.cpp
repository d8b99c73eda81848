#include "Shell/ObservedFolders.h"

#include "Shell/FileURL.h"
#include "Shell/Testing/SampleExtension.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

class ObservedFolders : public testing::Test {
  protected:
    using Calls = std::vector<std::string>;

    static NS::Ref<NS::URL> url(const std::string& path) {
        return NS::Ref<NS::URL>(*Shell::fileURLFromText("file://" + path));
    }
    bool begin(const char* caller, const std::string& path) {
        return folders.begin(caller, url(path));
    }
    bool end(const char* caller, const std::string& path) { return folders.end(caller, url(path)); }
    const Calls& calls() const { return extension->calls; }

    NS::Ref<Tests::SampleExtension> extension = NS::make<Tests::SampleExtension>();
    Shell::ObservedFolders folders{extension};
};

TEST_F(ObservedFolders, TellOfTheFirstBeginAndTheLastEndOfACaller) {
    EXPECT_TRUE(begin(":1.1", "/a"));
    EXPECT_TRUE(begin(":1.1", "/a"));
    EXPECT_EQ(calls(), Calls{"begin /a"});
    EXPECT_TRUE(end(":1.1", "/a"));
    EXPECT_EQ(calls(), Calls{"begin /a"});
    EXPECT_TRUE(end(":1.1", "/a"));
    EXPECT_EQ(calls(), (Calls{"begin /a", "end /a"}));
}

TEST_F(ObservedFolders, TellOfTheFirstBeginAndTheLastEndOfAllCallers) {
    EXPECT_TRUE(begin(":1.1", "/a"));
    EXPECT_TRUE(begin(":1.2", "/a"));
    EXPECT_TRUE(end(":1.1", "/a"));
    EXPECT_EQ(calls(), Calls{"begin /a"});
    EXPECT_TRUE(end(":1.2", "/a"));
    EXPECT_EQ(calls(), (Calls{"begin /a", "end /a"}));
}

TEST_F(ObservedFolders, DoNotEndWhatTheCallerDoesNotHave) {
    EXPECT_TRUE(begin(":1.1", "/a"));
    EXPECT_FALSE(end(":1.2", "/a"));
    EXPECT_FALSE(end(":1.1", "/b"));
    EXPECT_EQ(calls(), Calls{"begin /a"});
    EXPECT_TRUE(end(":1.1", "/a"));
    EXPECT_FALSE(end(":1.1", "/a"));
}

TEST_F(ObservedFolders, EndWithTheirCaller) {
    EXPECT_TRUE(begin(":1.1", "/a"));
    EXPECT_TRUE(begin(":1.1", "/a"));
    EXPECT_TRUE(begin(":1.1", "/b"));
    EXPECT_TRUE(begin(":1.2", "/b"));
    extension->calls.clear();
    folders.callerGone(":1.1");
    EXPECT_EQ(calls(), Calls{"end /a"});
    folders.callerGone(":1.1");
    folders.callerGone(":1.3");
    EXPECT_EQ(calls(), Calls{"end /a"});
    folders.callerGone(":1.2");
    EXPECT_EQ(calls(), (Calls{"end /a", "end /b"}));
}

TEST_F(ObservedFolders, EndWithAllCallers) {
    EXPECT_TRUE(begin(":1.1", "/a"));
    EXPECT_TRUE(begin(":1.2", "/b"));
    extension->calls.clear();
    folders.allCallersGone();
    EXPECT_EQ(calls(), (Calls{"end /a", "end /b"}));
}

TEST_F(ObservedFolders, AreTheSameWhenTheirPathsAre) {
    EXPECT_TRUE(begin(":1.1", "/a%62"));
    EXPECT_TRUE(begin(":1.1", "/ab/"));
    EXPECT_TRUE(end(":1.1", "/ab"));
    EXPECT_TRUE(end(":1.1", "/ab"));
    EXPECT_EQ(calls(), (Calls{"begin /ab", "end /ab"}));
}

TEST_F(ObservedFolders, AreLimitedForACaller) {
    for (std::size_t i = 0; i < Shell::ObservedFolders::kFoldersPerCaller; ++i) {
        ASSERT_TRUE(begin(":1.1", "/" + std::to_string(i)));
    }
    extension->calls.clear();
    EXPECT_FALSE(begin(":1.1", "/more"));
    EXPECT_TRUE(begin(":1.1", "/0"));
    EXPECT_TRUE(begin(":1.2", "/more"));
    EXPECT_TRUE(end(":1.1", "/1"));
    EXPECT_TRUE(begin(":1.1", "/more"));
    EXPECT_EQ(calls(), (Calls{"begin /more", "end /1"}));
}

TEST_F(ObservedFolders, HavePathsThatTheSystemOpens) {
    const std::string longest = "/" + std::string(Shell::ObservedFolders::kLongestPath - 1, 'a');
    EXPECT_TRUE(begin(":1.1", longest));
    EXPECT_FALSE(begin(":1.1", longest + "a"));
    EXPECT_EQ(calls(), Calls{"begin " + longest});
}

} // namespace
