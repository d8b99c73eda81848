#include "Platform/Foundation/ZeroBytes.h"

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

namespace {

// Bytes of which some are zero, the same in each run.
std::string bytesWithZeros(std::size_t length, unsigned everyWhich) {
    std::mt19937 random(static_cast<unsigned>(length) * 31 + everyWhich);
    std::string bytes(length, '.');
    for (char& byte : bytes) {
        const bool isZero = random() % everyWhich == 0;
        byte = isZero ? '\0' : static_cast<char>(1 + random() % 255);
    }
    return bytes;
}

std::vector<std::size_t> found(std::string_view bytes) {
    std::vector<std::size_t> places;
    NS::ZeroBytes zeros(bytes);
    for (std::size_t at = zeros.next(); at != std::string_view::npos; at = zeros.next()) {
        places.push_back(at);
    }
    return places;
}

std::vector<std::size_t> searched(std::string_view bytes) {
    std::vector<std::size_t> places;
    for (std::size_t at = bytes.find('\0'); at != std::string_view::npos;
         at = bytes.find('\0', at + 1)) {
        places.push_back(at);
    }
    return places;
}

TEST(ZeroBytes, AreFoundInOrderInTextsOfAnyLength) {
    for (std::size_t length = 0; length < 4 * NS::kZeroBytesSpan; ++length) {
        for (const unsigned everyWhich : {1U, 3U, 50U, 300U}) {
            const std::string bytes = bytesWithZeros(length, everyWhich);
            ASSERT_EQ(found(bytes), searched(bytes)) << length << " bytes, 1 of " << everyWhich;
        }
    }
}

TEST(ZeroBytes, AreNotLookedForBehindTheText) {
    const std::string bytes("abc\0", 4);
    EXPECT_EQ(found(std::string_view(bytes).substr(0, 3)), std::vector<std::size_t>());
}

TEST(ZeroBytes, AreNoneWhenAllWereFound) {
    NS::ZeroBytes zeros(std::string_view("\0", 1));
    EXPECT_EQ(zeros.next(), 0U);
    EXPECT_EQ(zeros.next(), std::string_view::npos);
    EXPECT_EQ(zeros.next(), std::string_view::npos);
}

TEST(ZeroBytes, AreTheSameOneByOne) {
    for (unsigned everyWhich = 1; everyWhich < 100; ++everyWhich) {
        const std::string bytes = bytesWithZeros(NS::kZeroBytesSpan, everyWhich);
        EXPECT_EQ(NS::zeroBytesOneByOne(bytes.data()), NS::zeroBytesAt(bytes.data()));
    }
}

} // namespace
