#include "Platform/Foundation/Data.h"

#include "Platform/Foundation/String.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

namespace {

using NS::bytesOf;
using NS::charactersOf;
using NS::Data;
using NS::MutableData;

std::vector<std::byte> counting(std::size_t count) {
    std::vector<std::byte> bytes;
    for (std::size_t i = 0; i < count; ++i) {
        bytes.push_back(static_cast<std::byte>(i));
    }
    return bytes;
}

TEST(Data, CopiesItsBytes) {
    std::string source = "hello";
    const auto data = Data::dataWithBytes(bytesOf(source));
    source[0] = 'j';
    EXPECT_EQ(charactersOf(data->bytes()), "hello");
    EXPECT_EQ(data->length(), 5U);
}

TEST(Data, CanBeEmpty) {
    const auto data = Data::dataWithBytes({});
    EXPECT_EQ(data->length(), 0U);
    EXPECT_TRUE(data->bytes().empty());
    EXPECT_EQ(data->description()->utf8(), "{length = 0, bytes = 0x}");
}

TEST(Data, KeepsTheOwnerOfBytesThatItDidNotCopy) {
    const auto owner = Data::dataWithBytes(bytesOf("owned"));
    {
        const auto data = Data::dataWithBytesNoCopy(owner->bytes().subspan(1, 3), owner);
        EXPECT_EQ(charactersOf(data->bytes()), "wne");
        EXPECT_EQ(data->bytes().data(), owner->bytes().data() + 1);
        EXPECT_EQ(owner->referenceCount(), 2U);
    }
    EXPECT_EQ(owner->referenceCount(), 1U);
}

TEST(Data, TakesAVectorOverInPlace) {
    std::vector<std::byte> bytes = counting(1000);
    const std::byte* const address = bytes.data();
    const auto data = Data::dataWithVector(std::move(bytes));
    EXPECT_EQ(data->bytes().data(), address);
    EXPECT_EQ(data->length(), 1000U);
}

TEST(Data, EqualsDataOfTheSameBytes) {
    const auto data = Data::dataWithBytes(bytesOf("abc"));
    const auto same = NS::make<MutableData>(bytesOf("abc"));
    EXPECT_TRUE(data->isEqual(same.get()));
    EXPECT_TRUE(same->isEqual(data.get()));
    EXPECT_EQ(data->hash(), same->hash());
    EXPECT_FALSE(data->isEqual(Data::dataWithBytes(bytesOf("abd")).get()));
    EXPECT_FALSE(data->isEqual(Data::dataWithBytes(bytesOf("ab")).get()));
    EXPECT_FALSE(data->isEqual(NS::str("abc").get()));
    EXPECT_FALSE(data->isEqual(nullptr));
}

struct Described {
    std::size_t length;
    const char* text;
};

constexpr Described kDescriptions[] = {
    {1,   "{length = 1, bytes = 0x00}"                                                          },
    {5,   "{length = 5, bytes = 0x0001020304}"                                                  },
    {24,  "{length = 24, bytes = 0x000102030405060708090a0b0c0d0e0f1011121314151617}"           },
    {25,  "{length = 25, bytes = 0x00010203 04050607 08090a0b 0c0d0e0f ... 11121314 15161718 }" },
    {300, "{length = 300, bytes = 0x00010203 04050607 08090a0b 0c0d0e0f ... 24252627 28292a2b }"},
};

TEST(Data, DescribesItsLengthAndItsEnds) {
    for (const Described& each : kDescriptions) {
        EXPECT_EQ(Data::dataWithVector(counting(each.length))->description()->utf8(), each.text);
    }
}

TEST(MutableData, GrowsAndIsReplaced) {
    const auto data = NS::make<MutableData>();
    data->appendBytes(bytesOf("ab"));
    data->appendBytes({});
    data->appendBytes(bytesOf("cd"));
    EXPECT_EQ(charactersOf(data->bytes()), "abcd");
    data->setData(bytesOf("x"));
    EXPECT_EQ(charactersOf(data->bytes()), "x");
    EXPECT_TRUE(data->isKindOfClass(Data::kClass));
}

TEST(MutableData, AppendsItsOwnBytes) {
    const auto data = NS::make<MutableData>(bytesOf("abcd"));
    for (int i = 0; i < 3; ++i) {
        data->appendBytes(data->bytes());
    }
    EXPECT_EQ(data->length(), 32U);
    data->appendBytes(data->bytes().subspan(2, 2));
    EXPECT_EQ(charactersOf(data->bytes().last(6)), "abcdcd");
}

TEST(MutableData, IsReplacedByAPartOfItself) {
    const auto data = NS::make<MutableData>(bytesOf("abcd"));
    data->setData(data->bytes().subspan(1, 2));
    EXPECT_EQ(charactersOf(data->bytes()), "bc");
}

TEST(MutableData, SharesBytesUntilItChanges) {
    const auto data = Data::dataWithBytes(bytesOf("abcd"));
    const auto appended = NS::make<MutableData>(*data);
    const auto replaced = NS::make<MutableData>(*data);
    EXPECT_EQ(appended->bytes().data(), data->bytes().data());
    appended->appendBytes(appended->bytes().first(2));
    replaced->setData(replaced->bytes().last(1));
    EXPECT_EQ(charactersOf(appended->bytes()), "abcdab");
    EXPECT_EQ(charactersOf(replaced->bytes()), "d");
    EXPECT_EQ(charactersOf(data->bytes()), "abcd");
    EXPECT_EQ(data->referenceCount(), 1U);
}

TEST(MutableData, IsNotSharedWhenItsBytesAreItsOwn) {
    const auto data = NS::make<MutableData>(bytesOf("abcd"));
    const auto copy = NS::make<MutableData>(static_cast<const Data&>(*data));
    data->appendBytes(bytesOf("e"));
    EXPECT_EQ(charactersOf(copy->bytes()), "abcd");
}

TEST(Data, HasTwinsThatShareItsBytes) {
    auto data = Data::dataWithBytes(bytesOf("abcd"));
    const auto twin = data->twin();
    const auto third = twin->twin();
    EXPECT_NE(twin, data);
    EXPECT_STREQ(third->objectClass().name, "NSData");
    EXPECT_EQ(third->bytes().data(), data->bytes().data());
    data = Data::dataWithBytes({});
    EXPECT_EQ(charactersOf(third->bytes()), "abcd");
}

} // namespace
