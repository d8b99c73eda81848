#include "Platform/Foundation/Hashing.h"

#include "Platform/Foundation/HashIndex.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace {

using namespace std::string_view_literals;

TEST(HashOfBytes, DependsOnEveryByteAndOnTheLength) {
    std::set<std::size_t> hashes;
    const std::string text(40, 'a');
    for (std::size_t length = 0; length <= text.size(); ++length) {
        hashes.insert(NS::hashOfBytes({text.data(), length}));
    }
    for (std::size_t i = 0; i < text.size(); ++i) {
        std::string changed = text;
        changed[i] = 'b';
        hashes.insert(NS::hashOfBytes(changed));
    }
    EXPECT_EQ(hashes.size(), 2 * text.size() + 1);
}

TEST(HashOfBytes, TellsZerosAtTheEndApart) {
    EXPECT_NE(NS::hashOfBytes("a"), NS::hashOfBytes("a\0"sv));
    EXPECT_NE(NS::hashOfBytes(""), NS::hashOfBytes("\0"sv));
    EXPECT_NE(NS::hashOfBytes("12345678"), NS::hashOfBytes("12345678\0"sv));
}

TEST(HashOfBytes, DoesNotDependOnWhereTheBytesStand) {
    const std::string text = "xyz some text";
    EXPECT_EQ(NS::hashOfBytes(std::string_view(text).substr(4)), NS::hashOfBytes("some text"));
}

TEST(HashOfInteger, SpreadsNeighboursOverATable) {
    std::set<std::size_t> low;
    for (std::uint64_t i = 0; i < 1000; ++i) {
        low.insert(NS::hashOfInteger(i << 32U) & 0xFFFFU);
    }
    EXPECT_GT(low.size(), 950U);
}

TEST(HashOfReal, IsTheSameForEqualNumbers) {
    EXPECT_EQ(NS::hashOfReal(0.0), NS::hashOfReal(-0.0));
    EXPECT_EQ(NS::hashOfReal(std::nan("1")), NS::hashOfReal(-std::nan("2")));
    EXPECT_NE(NS::hashOfReal(0.5), NS::hashOfReal(-0.5));
}

// Which key a process drew cannot be seen from within; that two of them differ can.
TEST(HashOfBytesDeathTest, DiffersBetweenProcesses) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    std::set<int> results;
    const auto statusOf = [] {
        std::_Exit(static_cast<int>(NS::hashOfBytes("key") & 0x7FU));
    };
    const auto note = [&results](int status) {
        results.insert(status);
        return true;
    };
    for (int i = 0; i < 6; ++i) {
        EXPECT_EXIT(statusOf(), note, "");
    }
    EXPECT_GT(results.size(), 1U);
}

class HashIndex : public testing::Test {
  protected:
    void add(std::size_t value) {
        entries.push_back(value);
        index.appended(entries.size(), [this](std::size_t p) { return hashOf(entries[p]); });
    }
    std::size_t find(std::size_t value) const {
        return index.find([&] { return hashOf(value); }, entries.size(),
                          [&](std::size_t p) { return entries[p] == value; });
    }
    // Few different ones, and those in the high bits only.
    static std::size_t hashOf(std::size_t value) { return (value % 5) << 60U; }

    std::vector<std::size_t> entries;
    NS::HashIndex index;
};

TEST_F(HashIndex, FindsEveryEntryWhateverTheirHashes) {
    for (std::size_t i = 0; i < 200; ++i) {
        add(i * 3);
        for (std::size_t j = 0; j <= i; ++j) {
            ASSERT_EQ(find(j * 3), j);
            ASSERT_EQ(find(j * 3 + 1), NS::HashIndex::kNotFound);
        }
    }
}

TEST_F(HashIndex, DoesNotAskForAHashWhileThereIsNoIndex) {
    for (std::size_t i = 0; i < NS::HashIndex::kUnindexedEntries; ++i) {
        add(i);
    }
    bool asked = false;
    const auto hash = [&] {
        asked = true;
        return std::size_t{0};
    };
    (void)index.find(hash, entries.size(), [](std::size_t) { return false; });
    EXPECT_FALSE(asked);
    add(100);
    (void)index.find(hash, entries.size(), [](std::size_t) { return false; });
    EXPECT_TRUE(asked);
}

TEST_F(HashIndex, FollowsEntriesThatMoved) {
    for (std::size_t i = 0; i < 20; ++i) {
        add(i);
    }
    while (entries.size() > 1) {
        entries.erase(entries.begin());
        index.rebuild(entries.size(), [this](std::size_t p) { return hashOf(entries[p]); });
        for (std::size_t p = 0; p < entries.size(); ++p) {
            ASSERT_EQ(find(entries[p]), p);
        }
        ASSERT_EQ(find(entries.front() - 1), NS::HashIndex::kNotFound);
    }
}

} // namespace
