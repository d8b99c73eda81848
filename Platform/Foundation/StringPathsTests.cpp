#include "Platform/Foundation/Array.h"
#include "Platform/Foundation/String.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using NS::str;

std::vector<std::string> components(const char* path) {
    std::vector<std::string> texts;
    const auto array = str(path)->pathComponents();
    for (const NS::Ref<NS::Object>& each : *array) {
        texts.push_back(each->description()->utf8());
    }
    return texts;
}

struct Components {
    const char* path;
    std::vector<std::string> components;
};

TEST(PathComponents, BeginWithTheRootAndEndWithASlashAtTheEnd) {
    const Components kCases[] = {
        {"",                          {}                                  },
        {"/",                         {"/"}                               },
        {"//",                        {"/"}                               },
        {"///",                       {"/"}                               },
        {"a",                         {"a"}                               },
        {"a/",                        {"a", "/"}                          },
        {"a//",                       {"a", "/"}                          },
        {"a/b",                       {"a", "b"}                          },
        {"/Trash",                    {"/", "Trash"}                      },
        {"//Trash",                   {"/", "Trash"}                      },
        {"/a//b/",                    {"/", "a", "b", "/"}                },
        {"/a/./../b",                 {"/", "a", ".", "..", "b"}          },
        {"/caf\xC3\xA9/\xE6\x97\xA5", {"/", "caf\xC3\xA9", "\xE6\x97\xA5"}},
    };
    for (const Components& each : kCases) {
        EXPECT_EQ(components(each.path), each.components) << each.path;
    }
}

TEST(PathComponents, AreAnArrayThatDoesNotChange) {
    EXPECT_EQ(&str("/a")->pathComponents()->objectClass(), &NS::Array::kClass);
}

TEST(PathComponents, OfAVeryLongPathTakeNoTime) {
    std::string path;
    for (int i = 0; i < 100000; ++i) {
        path += "/n";
    }
    EXPECT_EQ(str(path)->pathComponents()->count(), 100001U);
}

TEST(PathComponents, KeepBytesThatAreNotUtf8) {
    const auto path = NS::String::fromFileSystemRepresentation("/a\xFF/b");
    const auto name =
        NS::as<NS::String>(NS::RefPtr<NS::Object>(path->pathComponents()->objectAtIndex(1)));
    EXPECT_EQ(name->fileSystemRepresentation(), "a\xFF");
}

struct Split {
    const char* path;
    const char* last;
    const char* parent;
};

constexpr Split kSplits[] = {
    {"",                      "",         ""            },
    {"/",                     "/",        "/"           },
    {"//",                    "/",        "/"           },
    {"a",                     "a",        ""            },
    {"a/",                    "a",        ""            },
    {"/a",                    "a",        "/"           },
    {"//a",                   "a",        "/"           },
    {"/a/",                   "a",        "/"           },
    {"a/b",                   "b",        "a"           },
    {"a//b",                  "b",        "a"           },
    {"/a/b/c.txt",            "c.txt",    "/a/b"        },
    {"/a/b//",                "b",        "/a"          },
    {"/caf\xC3\xA9/\xC3\xA9", "\xC3\xA9", "/caf\xC3\xA9"},
};

TEST(LastPathComponent, LeavesSlashesOut) {
    for (const Split& each : kSplits) {
        EXPECT_EQ(str(each.path)->lastPathComponent()->utf8(), each.last) << each.path;
    }
}

TEST(StringByDeletingLastPathComponent, LeavesTheParent) {
    for (const Split& each : kSplits) {
        EXPECT_EQ(str(each.path)->stringByDeletingLastPathComponent()->utf8(), each.parent)
            << each.path;
    }
}

struct Join {
    const char* path;
    const char* component;
    const char* joined;
};

constexpr Join kJoins[] = {
    {"/tmp",         "a",            "/tmp/a"                },
    {"/tmp/",        "a",            "/tmp/a"                },
    {"/tmp//",       "a",            "/tmp/a"                },
    {"/tmp",         "/a",           "/tmp/a"                },
    {"/tmp/",        "//a",          "/tmp/a"                },
    {"/tmp",         "a/b",          "/tmp/a/b"              },
    {"/tmp",         "a//b/",        "/tmp/a/b"              },
    {"//tmp",        "a",            "/tmp/a"                },
    {"tmp",          "a",            "tmp/a"                 },
    {"/",            "a",            "/a"                    },
    {"/",            "/a",           "/a"                    },
    {"/",            "",             "/"                     },
    {"/",            "/",            "/"                     },
    {"",             "a",            "a"                     },
    {"",             "/a",           "/a"                    },
    {"",             "",             ""                      },
    {"",             "/",            "/"                     },
    {"a",            "",             "a"                     },
    {"a/",           "/",            "a"                     },
    {"caf\xC3\xA9",  "x",            "caf\xC3\xA9/x"         },
    {"/\xC3\xA9//b", "c//\xC3\xA9/", "/\xC3\xA9/b/c/\xC3\xA9"},
};

TEST(StringByAppendingPathComponent, PutsExactlyOneSlashBetweenTheParts) {
    for (const Join& each : kJoins) {
        EXPECT_EQ(str(each.path)->stringByAppendingPathComponent(*str(each.component))->utf8(),
                  each.joined)
            << each.path << " and " << each.component;
    }
}

TEST(StringByAppendingPathComponent, UndoesTheSplitOfAPath) {
    for (const char* path : {"/", "/a", "/a/b", "/a/b/c", "a/b", "a"}) {
        const auto joined =
            str(path)->stringByDeletingLastPathComponent()->stringByAppendingPathComponent(
                *str(path)->lastPathComponent());
        EXPECT_EQ(joined->utf8(), path);
    }
}

} // namespace
