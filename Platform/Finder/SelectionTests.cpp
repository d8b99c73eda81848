#include "Platform/Finder/Selection.h"

#include "Platform/Finder/FinderSyncController.h"
#include "Platform/Foundation/Testing/RaisedException.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using namespace std::string_view_literals;

class Selection : public testing::Test {
  protected:
    using Paths = std::vector<std::string>;

    static NS::RefPtr<FI::Selection> ofPaths(std::string_view paths) {
        return FI::Selection::selectionWithPaths(NS::Data::dataWithBytes(NS::bytesOf(paths)));
    }
    static NS::Ref<FI::Selection> ofURLs(std::initializer_list<NS::Ref<NS::Object>> urls) {
        return FI::Selection::selectionWithURLs(NS::Array::arrayWithObjects(urls));
    }
    static NS::Ref<NS::URL> url(const char* text) {
        return NS::Ref<NS::URL>(*NS::URL::URLWithString(*NS::str(text)));
    }
    static Paths pathsOf(const FI::Selection& selection) {
        Paths paths;
        selection.visitPaths([&](std::string_view path) {
            paths.emplace_back(path);
            return true;
        });
        return paths;
    }
    static Paths textsOf(const NS::Array& urls) {
        Paths texts;
        for (const NS::Ref<NS::Object>& each : urls) {
            texts.push_back(each->description()->utf8());
        }
        return texts;
    }
};

TEST_F(Selection, TellsThePathsThatItWasMadeOf) {
    const auto selection = ofPaths("/a\0/b c\0/\xFF\xC3\0"sv);
    ASSERT_TRUE(selection);
    EXPECT_EQ(selection->count(), 3U);
    EXPECT_EQ(pathsOf(*selection), (Paths{"/a", "/b c", "/\xFF\xC3"}));
    EXPECT_EQ(selection->firstPath()->utf8(), "/a");
}

TEST_F(Selection, TellsThePathsOfItsURLs) {
    const auto selection = ofURLs({url("file:///a/"), url("file:///%C3%A9%FF")});
    EXPECT_EQ(selection->count(), 2U);
    EXPECT_EQ(pathsOf(selection), (Paths{"/a", "/\xC3\xA9\xFF"}));
    EXPECT_EQ(selection->firstPath()->utf8(), "/a");
}

TEST_F(Selection, MayBeEmpty) {
    for (const auto& selection : {ofPaths(""), NS::RefPtr<FI::Selection>(ofURLs({}))}) {
        ASSERT_TRUE(selection);
        EXPECT_EQ(selection->count(), 0U);
        EXPECT_EQ(pathsOf(*selection), Paths{});
        EXPECT_EQ(selection->URLs()->count(), 0U);
        EXPECT_FALSE(selection->firstPath());
    }
}

TEST_F(Selection, LeavesSlashesAtTheEndToTheRootAlone) {
    EXPECT_EQ(pathsOf(*ofPaths("/a/\0/b//\0/\0///\0//c/d\0"sv)),
              (Paths{"/a", "/b", "/", "/", "//c/d"}));
}

TEST_F(Selection, IsNoneOfWhatIsNoAbsolutePathOrHasNoEnd) {
    for (const std::string_view paths :
         {"a\0"sv, "\0"sv, "/a\0b\0"sv, "/a\0\0"sv, "/a"sv, "/a\0/b"sv, "\0/a\0"sv}) {
        EXPECT_FALSE(ofPaths(paths)) << testing::PrintToString(paths);
    }
}

// Long ones are looked at in blocks.
TEST_F(Selection, CountsHoweverManyPaths) {
    std::string paths;
    for (std::size_t count = 1; count <= 300; ++count) {
        paths.append("/" + std::string(count % 7, 'a')).push_back('\0');
        const auto selection = ofPaths(paths);
        ASSERT_TRUE(selection) << count;
        ASSERT_EQ(selection->count(), count);
    }
    EXPECT_EQ(ofPaths("/" + std::string(5'000, 'a') + '\0')->count(), 1U);
}

TEST_F(Selection, IsNoneOfManyPathsOneOfWhichIsNotAbsolute) {
    std::string paths;
    for (int i = 0; i < 200; ++i) {
        paths.append("/" + std::string(static_cast<std::size_t>(i % 7), 'a')).push_back('\0');
    }
    for (char& each : paths) {
        if (each == '/') {
            each = 'b';
            EXPECT_FALSE(ofPaths(paths)) << &each - paths.data();
            each = '/';
        }
    }
    EXPECT_TRUE(ofPaths(paths));
}

TEST_F(Selection, MakesURLsOfItsPathsJustOnce) {
    const auto selection = ofPaths("/a b/\0/\xFF\0"sv);
    const auto urls = selection->URLs();
    EXPECT_EQ(textsOf(urls), (Paths{"file:///a%20b", "file:///%FF"}));
    EXPECT_EQ(selection->URLs(), urls);
}

TEST_F(Selection, GivesTheURLsThatItWasMadeOf) {
    const auto urls = NS::Array::arrayWithObjects({url("file:///a")});
    EXPECT_EQ(FI::Selection::selectionWithURLs(urls)->URLs(), urls);
}

TEST_F(Selection, EndsAVisitThatWantsNoMore) {
    for (const auto& selection :
         {ofPaths("/a\0/b\0"sv),
          NS::RefPtr<FI::Selection>(ofURLs({url("file:///a"), url("file:///b")})),
          NS::RefPtr<FI::Selection>(ofURLs({url("file:///%FF"), url("file:///b")}))}) {
        int visits = 0;
        selection->visitPaths([&](std::string_view) {
            ++visits;
            return false;
        });
        EXPECT_EQ(visits, 1);
    }
}

TEST_F(Selection, PassesOverURLsWithoutAPathAndRaisesForWhatIsNone) {
    const auto odd = ofURLs({url("mailto:"), url("file:///a")});
    EXPECT_EQ(pathsOf(odd), Paths{"/a"});
    EXPECT_FALSE(odd->firstPath());
    const auto mistaken = ofURLs({NS::str("/a")});
    EXPECT_EQ(Tests::nameOfException([&] { (void)pathsOf(mistaken); }),
              NS::kInvalidArgumentException);
}

TEST_F(Selection, IsWhatTheControllerShowsAsURLs) {
    const auto controller = NS::make<FI::FinderSyncController>();
    EXPECT_FALSE(controller->selectedItemURLs());
    controller->setSelection(ofPaths("/a\0"sv));
    EXPECT_EQ(textsOf(*controller->selectedItemURLs()), Paths{"file:///a"});
    controller->setSelectedItemURLs(NS::Array::arrayWithObjects({url("file:///b")}));
    EXPECT_EQ(pathsOf(*controller->selection()), Paths{"/b"});
    controller->setSelectedItemURLs(nullptr);
    EXPECT_FALSE(controller->selection());
}

} // namespace
