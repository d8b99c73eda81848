#include "Programs/QuorvaneHost/FreeNames.h"

#include <gtest/gtest.h>

#include <set>

namespace {

std::string nameAmong(const std::string& name, const std::set<std::string>& taken) {
    return FreeNames().nameFor("/Docs/" + name,
                               [&](const std::string& n) { return !taken.contains(n); });
}

TEST(FreeNames, AreTheNamesThemselvesWhereTheyAreFree) {
    EXPECT_EQ(nameAmong("a.txt", {"b.txt"}), "a.txt");
}

TEST(FreeNames, HaveANumberBeforeTheExtension) {
    EXPECT_EQ(nameAmong("a.txt", {"a.txt"}), "a 2.txt");
    EXPECT_EQ(nameAmong("a.txt", {"a.txt", "a 2.txt"}), "a 3.txt");
    EXPECT_EQ(nameAmong("folder", {"folder"}), "folder 2");
}

TEST(FreeNames, TakeNoDotForAnExtensionThatIsNone) {
    EXPECT_EQ(nameAmong(".hidden", {".hidden"}), ".hidden 2");
    EXPECT_EQ(nameAmong("end.", {"end."}), "end. 2");
    EXPECT_EQ(nameAmong("a.not an extension at all", {"a.not an extension at all"}),
              "a.not an extension at all 2");
}

TEST(FreeNames, FitInto255BytesAndAreCutAtACharacter) {
    std::string accents = "a";
    for (int i = 0; i < 125; ++i) {
        accents += "\u00e9";
    }
    accents += ".txt"; // 255 bytes
    const std::string free = nameAmong(accents, {accents});
    EXPECT_EQ(free.size(), 255U);
    EXPECT_TRUE(free.ends_with("\u00e9 2.txt"));
}

TEST(FreeNames, AreCutAnywhereInANameThatIsNoText) {
    const std::string name(255, '\x80');
    EXPECT_LE(nameAmong(name, {name}).size(), 255U);
}

TEST(FreeNames, AreNotTriedTwice) {
    FreeNames names;
    std::set<std::string> taken{"a"};
    int asked = 0;
    for (int i = 0; i < 1'000; ++i) {
        taken.insert(names.nameFor("/a", [&](const std::string& name) {
            ++asked;
            return !taken.contains(name);
        }));
    }
    EXPECT_EQ(taken.size(), 1'001U);
    EXPECT_EQ(asked, 1'001);
    EXPECT_EQ(names.nameFor("/Docs/a", [](const std::string&) { return true; }), "a");
}

} // namespace
