#include "Programs/QuorvaneHost/FreeNames.h"

#include <gtest/gtest.h>

#include <set>

namespace {

std::string freeNameAmong(const std::string& name, const std::set<std::string>& taken) {
    return freeName(name, [&](const std::string& n) { return !taken.contains(n); });
}

TEST(FreeName, IsTheNameItselfWhereItIsFree) {
    EXPECT_EQ(freeNameAmong("a.txt", {"b.txt"}), "a.txt");
}

TEST(FreeName, HasANumberBeforeTheExtension) {
    EXPECT_EQ(freeNameAmong("a.txt", {"a.txt"}), "a 2.txt");
    EXPECT_EQ(freeNameAmong("a.txt", {"a.txt", "a 2.txt"}), "a 3.txt");
    EXPECT_EQ(freeNameAmong("folder", {"folder"}), "folder 2");
}

TEST(FreeName, TakesNoDotForAnExtensionThatIsNone) {
    EXPECT_EQ(freeNameAmong(".hidden", {".hidden"}), ".hidden 2");
    EXPECT_EQ(freeNameAmong("end.", {"end."}), "end. 2");
    EXPECT_EQ(freeNameAmong("a.not an extension at all", {"a.not an extension at all"}),
              "a.not an extension at all 2");
}

TEST(FreeName, FitsInto255BytesAndCutsAtACharacter) {
    std::string accents = "a";
    for (int i = 0; i < 125; ++i) {
        accents += "\u00e9";
    }
    accents += ".txt"; // 255 bytes
    const std::string free = freeNameAmong(accents, {accents});
    EXPECT_EQ(free.size(), 255U);
    EXPECT_TRUE(free.ends_with("\u00e9 2.txt"));
}

} // namespace
