#include "Platform/Foundation/ByteBuffer.h"

#include "Platform/Foundation/Data.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <utility>

namespace {

void append(NS::ByteBuffer& buffer, std::string_view text) {
    std::memcpy(buffer.room(text.size()), text.data(), text.size());
    buffer.extend(text.size());
}

TEST(ByteBuffer, IsEmptyAtFirst) {
    EXPECT_EQ(NS::ByteBuffer().size(), 0U);
}

TEST(ByteBuffer, KeepsWhatWasWrittenWhileItGrows) {
    NS::ByteBuffer buffer;
    std::string expected;
    for (int i = 0; i < 1'000; ++i) {
        const std::string text = std::to_string(i) + ' ';
        append(buffer, text);
        expected += text;
    }
    EXPECT_EQ(NS::charactersOf(buffer), expected);
}

TEST(ByteBuffer, TakesInOnlyWhatItIsTold) {
    NS::ByteBuffer buffer;
    std::memcpy(buffer.room(4), "four", 4);
    buffer.extend(2);
    append(buffer, "x");
    EXPECT_EQ(NS::charactersOf(buffer), "fox");
}

TEST(ByteBuffer, GivesRoomForMoreThanTwiceItsSize) {
    NS::ByteBuffer buffer;
    append(buffer, "a");
    const std::string large(100'000, 'b');
    append(buffer, large);
    EXPECT_EQ(NS::charactersOf(buffer), "a" + large);
}

TEST(ByteBuffer, LeavesItsBytesToTheOneThatTakesItOver) {
    NS::ByteBuffer buffer;
    append(buffer, "bytes");
    NS::ByteBuffer other(std::move(buffer));
    EXPECT_EQ(NS::charactersOf(other), "bytes");
    append(other, "!");
    buffer = std::move(other);
    EXPECT_EQ(NS::charactersOf(buffer), "bytes!");
}

TEST(ByteBuffer, IsCopiedWithWhatItHas) {
    NS::ByteBuffer buffer;
    append(buffer, "bytes");
    NS::ByteBuffer copy(buffer);
    append(copy, "!");
    EXPECT_EQ(NS::charactersOf(buffer), "bytes");
    EXPECT_EQ(NS::charactersOf(copy), "bytes!");
}

} // namespace
