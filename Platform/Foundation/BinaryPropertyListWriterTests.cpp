#include "Platform/Foundation/BinaryPropertyListWriter.h"

#include "Platform/Foundation/BinaryPropertyListReader.h"
#include "Platform/Foundation/Number.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>

namespace {

using namespace std::string_literals;
using Kind = NS::BinaryPropertyListReader::Kind;
using Reference = NS::BinaryPropertyListWriter::Reference;

class BinaryPropertyListWriter : public testing::Test {
  protected:
    // The bytes of the only object of the list.
    std::string object() {
        const auto bytes = list.finish(0);
        const std::string all(NS::charactersOf(bytes));
        return all.substr(8, all.size() - 8 - 1 - 32);
    }

    NS::BinaryPropertyListWriter list;
};

TEST_F(BinaryPropertyListWriter, WritesAWholeList) {
    const Reference key = list.addAscii("key");
    const Reference value = list.addBool(true);
    const Reference top = list.addDictionary({&key, 1}, {&value, 1});
    const auto bytes = list.finish(top);
    EXPECT_EQ(NS::charactersOf(bytes),
              "bplist00\x53key\x09\xD1\x00\x01"
              "\x08\x0C\x0D"
              "\0\0\0\0\0\0\x01\x01\0\0\0\0\0\0\0\x03\0\0\0\0\0\0\0\x02\0\0\0\0\0\0\0\x10"s);
}

TEST_F(BinaryPropertyListWriter, GivesIntegersTheirSmallestWidth) {
    struct Row {
        std::int64_t value;
        std::string bytes;
    };
    const Row rows[] = {
        {0,                                        "\x10\x00"s                            },
        {255,                                      "\x10\xFF"s                            },
        {256,                                      "\x11\x01\x00"s                        },
        {65536,                                    "\x12\x00\x01\x00\x00"s                },
        {4294967295,                               "\x12\xFF\xFF\xFF\xFF"s                },
        {4294967296,                               "\x13\x00\x00\x00\x01\x00\x00\x00\x00"s},
        {-1,                                       "\x13\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF"s},
        {std::numeric_limits<std::int64_t>::min(), "\x13\x80\x00\x00\x00\x00\x00\x00\x00"s},
    };
    for (const Row& row : rows) {
        list = NS::BinaryPropertyListWriter();
        list.addInteger(row.value);
        EXPECT_EQ(object(), row.bytes) << row.value;
    }
}

TEST_F(BinaryPropertyListWriter, WritesAnUnsignedNumberBeyondTheSignedOnesIn16Bytes) {
    list.addUnsigned(std::numeric_limits<std::uint64_t>::max());
    EXPECT_EQ(object(), "\x14\0\0\0\0\0\0\0\0\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF"s);
}

TEST_F(BinaryPropertyListWriter, WritesANumberAsItsTypeHasIt) {
    list.addNumber(*NS::Number::numberWithFloat(1.5F));
    EXPECT_EQ(object(), "\x22\x3F\xC0\0\0"s);
    list = NS::BinaryPropertyListWriter();
    list.addNumber(*NS::Number::numberWithDouble(1.5));
    EXPECT_EQ(object(), "\x23\x3F\xF8\0\0\0\0\0\0"s);
    list = NS::BinaryPropertyListWriter();
    list.addNumber(*NS::Number::numberWithBool(false));
    EXPECT_EQ(object(), "\x08"s);
}

TEST_F(BinaryPropertyListWriter, WritesTextAsAsciiOrUtf16) {
    list.addString(*NS::str("caf\xC3\xA9"));
    EXPECT_EQ(object(), "\x64\0c\0a\0f\0\xE9"s);
    list = NS::BinaryPropertyListWriter();
    list.addString(*NS::String::fromUtf16(u"\xD83D"));
    EXPECT_EQ(object(), "\x61\xD8\x3D"s);
    list = NS::BinaryPropertyListWriter();
    list.addString(*NS::str("fifteen letters"));
    EXPECT_EQ(object(), "\x5F\x10\x0F"
                        "fifteen letters"s);
}

TEST_F(BinaryPropertyListWriter, WritesDatesDataAndUids) {
    list.addDate(-1);
    EXPECT_EQ(object(), "\x33\xBF\xF0\0\0\0\0\0\0"s);
    list = NS::BinaryPropertyListWriter();
    list.addData(NS::bytesOf("\0x"s));
    EXPECT_EQ(object(), "\x42\0x"s);
    list = NS::BinaryPropertyListWriter();
    list.addUid(0x100);
    EXPECT_EQ(object(), "\x81\x01\x00"s);
    list = NS::BinaryPropertyListWriter();
    list.addUid(0x10000);
    EXPECT_EQ(object(), "\x83\x00\x01\x00\x00"s);
}

TEST_F(BinaryPropertyListWriter, WritesEqualObjectsTwice) {
    EXPECT_NE(list.addAscii("same"), list.addAscii("same"));
}

// Readers refuse a reference width that could not also hold the number of objects, and an offset
// width that could not hold the table's offset.
TEST_F(BinaryPropertyListWriter, WidensReferencesAndOffsetsInTime) {
    for (const std::size_t count : {253U, 254U, 255U, 65533U, 65534U, 65535U}) {
        list = NS::BinaryPropertyListWriter();
        std::vector<Reference> elements;
        for (std::size_t i = 0; i < count; ++i) {
            elements.push_back(list.addBool(i % 2 == 0));
        }
        const Reference top = list.addArray(elements);
        const auto bytes = list.finish(top);
        const char* reason = nullptr;
        const auto reader = NS::BinaryPropertyListReader::open(bytes, reason).value();
        const unsigned referenceWidth = std::to_integer<unsigned>(bytes[bytes.size() - 25]);
        EXPECT_EQ(referenceWidth, count + 1 < 256 ? 1U : (count + 1 < 65536 ? 2U : 4U)) << count;
        const auto array = reader.item(reader.topObject());
        ASSERT_EQ(array.count, count);
        for (std::size_t i = 0; i < count; ++i) {
            ASSERT_EQ(reader.element(array, i).bits, i % 2 == 0 ? 1U : 0U);
        }
    }
}

// References that stand in a list already are widened with it, behind whatever head they have.
TEST_F(BinaryPropertyListWriter, WidensTheReferencesOfCollectionsThatItHas) {
    const Reference text = list.addAscii("text");
    const std::vector<Reference> many(20, text);
    const Reference array = list.addArray(many);
    const Reference dictionary = list.addDictionary({&text, 1}, {&array, 1});
    for (int i = 0; i < 65'536; ++i) {
        list.addBool(true);
    }
    const auto bytes = list.finish(dictionary);
    const char* reason = nullptr;
    const auto reader = NS::BinaryPropertyListReader::open(bytes, reason).value();
    const auto top = reader.item(reader.topObject());
    ASSERT_EQ(NS::charactersOf(reader.element(top, 0).bytes()), "text");
    const auto elements = reader.element(top, 1);
    ASSERT_EQ(elements.count, many.size());
    EXPECT_EQ(NS::charactersOf(reader.element(elements, 19).bytes()), "text");
}

TEST_F(BinaryPropertyListWriter, WritesCountsInAsFewBytesAsTheyTake) {
    struct Row {
        std::size_t count;
        std::string head;
    };
    const Row rows[] = {
        {14,    "\x5E"s                    },
        {15,    "\x5F\x10\x0F"s            },
        {255,   "\x5F\x10\xFF"s            },
        {256,   "\x5F\x11\x01\x00"s        },
        {65536, "\x5F\x12\x00\x01\x00\x00"s},
    };
    for (const Row& row : rows) {
        list = NS::BinaryPropertyListWriter();
        const auto bytes = list.finish(list.addAscii(std::string(row.count, 't')));
        const std::string all(NS::charactersOf(bytes));
        EXPECT_EQ(all.substr(8, row.head.size() + 1), row.head + "t") << row.count;
    }
}

TEST_F(BinaryPropertyListWriter, BeginsAnotherListInTheSameMemory) {
    for (int i = 0; i < 300; ++i) {
        list.addAscii("of the list before");
    }
    (void)list.finishInPlace(0);
    const std::size_t held = list.heldBytes();
    list.reset();
    const std::string another(NS::charactersOf(list.finishInPlace(list.addAscii("text"))));
    EXPECT_EQ(list.heldBytes(), held);
    NS::BinaryPropertyListWriter fresh;
    EXPECT_EQ(another, NS::charactersOf(fresh.finish(fresh.addAscii("text"))));
}

} // namespace
