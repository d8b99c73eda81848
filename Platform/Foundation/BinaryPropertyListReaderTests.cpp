#include "Platform/Foundation/BinaryPropertyListReader.h"

#include "Platform/Foundation/Testing/HandWrittenList.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <optional>
#include <string>

namespace {

using namespace std::string_literals;
using Kind = NS::BinaryPropertyListReader::Kind;

class BinaryPropertyListReader : public testing::Test {
  protected:
    std::optional<NS::BinaryPropertyListReader> open(std::string_view bytes) {
        reason = nullptr;
        return NS::BinaryPropertyListReader::open(NS::bytesOf(bytes), reason);
    }

    // The object that these bytes are, alone in a list.
    NS::BinaryPropertyListReader::Item itemOf(std::string_view object) {
        Tests::HandWrittenList list;
        list.add(object);
        text = list.text();
        return open(text).value().item(0);
    }

    std::string text;
    const char* reason = nullptr;
};

TEST_F(BinaryPropertyListReader, RefusesWhatIsNoList) {
    for (const std::string& bytes : {""s, "bplist"s, "xplist00"s, "bplist01"s, "bplist00"s,
                                     "bplist00" + std::string(31, '\0')}) {
        EXPECT_FALSE(open(bytes)) << bytes;
        EXPECT_NE(reason, nullptr) << bytes;
    }
}

TEST_F(BinaryPropertyListReader, RefusesWidthsThatAreNot1To8) {
    for (const unsigned width : {0U, 9U, 255U}) {
        Tests::HandWrittenList list;
        list.add("\x09"s);
        std::string bytes = list.text();
        bytes[bytes.size() - 26] = static_cast<char>(width);
        EXPECT_FALSE(open(bytes)) << width;
        bytes[bytes.size() - 26] = 1;
        bytes[bytes.size() - 25] = static_cast<char>(width);
        EXPECT_FALSE(open(bytes)) << width;
    }
}

TEST_F(BinaryPropertyListReader, RefusesATableThatDoesNotFit) {
    Tests::HandWrittenList list;
    list.add("\x09"s);
    const std::string right = list.text();
    const std::uint64_t most = std::numeric_limits<std::uint64_t>::max();
    for (const std::uint64_t count : {std::uint64_t{2}, most / 2 + 2, most}) {
        std::string bytes = right;
        bytes.replace(bytes.size() - 24, 8, Tests::HandWrittenList::bigEndian(count, 8));
        EXPECT_FALSE(open(bytes)) << count;
    }
    for (const std::uint64_t offset :
         {std::uint64_t{0}, std::uint64_t{7}, std::uint64_t{11}, most}) {
        std::string bytes = right;
        bytes.replace(bytes.size() - 8, 8, Tests::HandWrittenList::bigEndian(offset, 8));
        EXPECT_FALSE(open(bytes)) << offset;
    }
}

TEST_F(BinaryPropertyListReader, ReadsSingletons) {
    EXPECT_EQ(itemOf("\x00"s).kind, Kind::kNull);
    EXPECT_EQ(itemOf("\x0F"s).kind, Kind::kFill);
    EXPECT_EQ(itemOf("\x08"s).bits, 0U);
    EXPECT_EQ(itemOf("\x09"s).bits, 1U);
    EXPECT_EQ(itemOf("\x09"s).kind, Kind::kBoolean);
}

TEST_F(BinaryPropertyListReader, ReadsIntegersOfEveryWidth) {
    struct Row {
        const char* bytes;
        Kind kind;
        std::uint64_t bits;
    };
    constexpr std::uint64_t kTopBit = std::uint64_t{1} << 63U;
    const Row rows[] = {
        {"10FF",                               Kind::kInteger,  255              },
        {"11FFFE",                             Kind::kInteger,  65534            },
        {"1280000001",                         Kind::kInteger,  0x80000001       },
        {"13FFFFFFFFFFFFFFFE",                 Kind::kInteger,  ~std::uint64_t{1}},
        {"1400000000000000008000000000000000", Kind::kUnsigned, kTopBit          },
        {"1400000000000000000000000000000007", Kind::kInteger,  7                },
        {"14FFFFFFFFFFFFFFFF8000000000000000", Kind::kInteger,  kTopBit          },
    };
    for (const Row& row : rows) {
        const auto item = itemOf(Tests::bytesFromHex(row.bytes));
        EXPECT_EQ(item.kind, row.kind) << row.bytes;
        EXPECT_EQ(item.bits, row.bits) << row.bytes;
    }
}

TEST_F(BinaryPropertyListReader, RefusesIntegersBeyond64Bits) {
    for (const char* const bytes :
         {"1400000000000000010000000000000000", "14FFFFFFFFFFFFFFFF7FFFFFFFFFFFFFFF",
          "150000000000000000000000000000000000000000000000000000000000000000"}) {
        EXPECT_TRUE(itemOf(Tests::bytesFromHex(bytes)).isDamaged()) << bytes;
    }
}

TEST_F(BinaryPropertyListReader, ReadsRealsAndDates) {
    const auto single = itemOf("\x22\x3F\xC0\0\0"s);
    EXPECT_EQ(single.kind, Kind::kFloat);
    EXPECT_EQ(single.real, 1.5);
    const auto real = itemOf("\x23\xC0\x04\0\0\0\0\0\0"s);
    EXPECT_EQ(real.kind, Kind::kReal);
    EXPECT_EQ(real.real, -2.5);
    const auto date = itemOf("\x33\x7F\xF8\0\0\0\0\0\0"s);
    EXPECT_EQ(date.kind, Kind::kDate);
    EXPECT_TRUE(std::isnan(date.real));
    EXPECT_TRUE(itemOf("\x20\0"s).isDamaged());
    EXPECT_TRUE(itemOf("\x32\0\0\0\0"s).isDamaged());
}

TEST_F(BinaryPropertyListReader, ReadsUidsOf1To8Bytes) {
    for (unsigned width = 1; width <= 8; ++width) {
        const std::string marker(1, static_cast<char>(0x80 + width - 1));
        const auto item = itemOf(marker + Tests::HandWrittenList::bigEndian(200 + width, width));
        EXPECT_EQ(item.kind, Kind::kUid);
        EXPECT_EQ(item.bits, 200 + width);
    }
}

TEST_F(BinaryPropertyListReader, KnowsUsualUidsAtOnce) {
    Tests::HandWrittenList list;
    for (unsigned width = 1; width <= 5; ++width) {
        const std::string marker(1, static_cast<char>(0x80 + width - 1));
        list.add(marker + Tests::HandWrittenList::bigEndian(200 + width, width));
    }
    list.add("\x51x"s);
    list.add("\x83\0\0"s); // ends outside of the list
    text = list.text();
    const auto reader = open(text).value();
    for (unsigned width = 1; width <= 4; ++width) {
        EXPECT_EQ(reader.usualUid(width - 1), 200 + width);
    }
    for (unsigned object = 4; object <= 7; ++object) {
        EXPECT_EQ(reader.usualUid(object), NS::BinaryPropertyListReader::kNoUid) << object;
    }
}

TEST_F(BinaryPropertyListReader, ReadsLongerUidsWhoseValueFits) {
    for (unsigned width = 9; width <= 16; ++width) {
        const std::string marker(1, static_cast<char>(0x80 + width - 1));
        const std::string zeros(width - 8, '\0');
        const auto item = itemOf(marker + zeros + "\x01\x02\x03\x04\x05\x06\x07\x08");
        EXPECT_EQ(item.kind, Kind::kUid) << width;
        EXPECT_EQ(item.bits, 0x0102030405060708U) << width;
        EXPECT_TRUE(itemOf(marker + '\x01' + std::string(width - 1, '\0')).isDamaged()) << width;
        EXPECT_TRUE(itemOf(marker + std::string(width - 9, '\0') + '\x01' + std::string(8, '\0'))
                        .isDamaged())
            << width;
    }
}

TEST_F(BinaryPropertyListReader, ReadsBytesAndTextsInPlace) {
    const auto data = itemOf("\x43"
                             "abc"s);
    EXPECT_EQ(data.kind, Kind::kData);
    EXPECT_EQ(NS::charactersOf(data.bytes()), "abc");
    EXPECT_EQ(static_cast<const void*>(data.body), text.data() + 9);
    const auto ascii = itemOf("\x5F\x10\x11"
                              "seventeen letters"s);
    EXPECT_EQ(ascii.kind, Kind::kAscii);
    EXPECT_EQ(NS::charactersOf(ascii.bytes()), "seventeen letters");
    const auto wide = itemOf("\x62\x00\xE9\xD8\x3D"s);
    EXPECT_EQ(wide.kind, Kind::kUtf16);
    EXPECT_EQ(wide.count, 2U);
}

TEST_F(BinaryPropertyListReader, TakesACountOfEveryWidth) {
    for (const std::string& count :
         {"\x10\x03"s, "\x11\0\x03"s, "\x12\0\0\0\x03"s, "\x13\0\0\0\0\0\0\0\x03"s}) {
        const auto item = itemOf("\x4F" + count + "abc");
        EXPECT_EQ(item.kind, Kind::kData);
        EXPECT_EQ(item.count, 3U);
    }
}

TEST_F(BinaryPropertyListReader, RefusesWhatEndsOutsideOfTheList) {
    for (const char* const object : {"1101",
                                     "140000",
                                     "5F10",
                                     "5F1014616263",
                                     "220000",
                                     "3300",
                                     "8100",
                                     "44616263",
                                     "536162",
                                     "62000000",
                                     "A30000",
                                     "C200",
                                     "D100",
                                     "4F",
                                     "4F10",
                                     "4F0901",
                                     "4F1400000000000000000000000000000000",
                                     "4F13FFFFFFFFFFFFFFFF",
                                     "AF138000000000000000",
                                     "DF137FFFFFFFFFFFFFFF"}) {
        const auto item = itemOf(Tests::bytesFromHex(object));
        EXPECT_TRUE(item.isDamaged()) << object;
    }
}

TEST_F(BinaryPropertyListReader, RefusesUnknownKinds) {
    for (const int marker : {0x01, 0x07, 0x0A, 0x0E, 0x70, 0x90, 0xB0, 0xE0, 0xF0}) {
        EXPECT_TRUE(itemOf(std::string(1, static_cast<char>(marker))).isDamaged()) << marker;
    }
}

TEST_F(BinaryPropertyListReader, FollowsOffsetsAndReferencesOfEveryWidth) {
    for (unsigned width = 1; width <= 8; ++width) {
        Tests::HandWrittenList list;
        list.offsetWidth = width;
        list.referenceWidth = 9 - width;
        list.top = 2;
        list.add("\x51"
                 "k"s);
        list.add("\x10\x2A"s);
        list.add("\xD1"s + list.reference(0) + list.reference(1));
        list.add("\xA2"s + list.reference(1) + list.reference(0));
        const std::string bytes = list.text();
        const auto reader = open(bytes).value();
        const auto dictionary = reader.item(reader.topObject());
        ASSERT_EQ(dictionary.kind, Kind::kDictionary);
        EXPECT_EQ(NS::charactersOf(reader.element(dictionary, 0).bytes()), "k");
        EXPECT_EQ(reader.element(dictionary, 1).bits, 42U);
        EXPECT_EQ(reader.element(reader.item(3), 1).kind, Kind::kAscii);
    }
}

TEST_F(BinaryPropertyListReader, RefusesReferencesAndOffsetsToNothing) {
    Tests::HandWrittenList list;
    list.add("\xA1\x07"s);
    list.add("\x09"s);
    list.add("\x09"s);
    list.offsets[1] = 7;
    list.offsets[2] = 12;
    const std::string bytes = list.text();
    const auto reader = open(bytes).value();
    EXPECT_TRUE(reader.element(reader.item(0), 0).isDamaged());
    EXPECT_TRUE(reader.item(1).isDamaged());
    EXPECT_TRUE(reader.item(2).isDamaged());
    EXPECT_TRUE(reader.item(3).isDamaged());
}

} // namespace
