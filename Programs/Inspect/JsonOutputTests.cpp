#include "Programs/Inspect/JsonOutput.h"

#include "Programs/Inspect/InspectionError.h"

#include <gtest/gtest.h>

#include <limits>
#include <sstream>

namespace {

class JsonOutput : public testing::Test {
  protected:
    std::ostringstream text;
    Inspection::JsonOutput out{text, std::numeric_limits<std::uint64_t>::max()};
};

TEST_F(JsonOutput, IndentsWhatStandsWithinAnother) {
    out.beginObject();
    out.key("a");
    out.beginArray();
    out.literal("1");
    out.text("b");
    out.textForm("$data", "AA==");
    out.endArray();
    out.key("c");
    out.literalForm("$ref", "1");
    out.endObject();
    out.finish();
    EXPECT_EQ(text.str(), "{\n  \"a\": [\n    1,\n    \"b\",\n    {\"$data\": \"AA==\"}\n  ],\n"
                          "  \"c\": {\"$ref\": 1}\n}\n");
}

TEST_F(JsonOutput, KeepsWhatIsEmptyOnOneLine) {
    out.beginArray();
    out.beginObject();
    out.endObject();
    out.beginArray();
    out.endArray();
    out.endArray();
    EXPECT_EQ(text.str(), "[\n  {},\n  []\n]");
}

TEST_F(JsonOutput, EscapesWhatJsonDoesNotHold) {
    out.text(std::string("\"\\\n\r\t\0\x1F\x7F/\xC3\xA9", 11));
    EXPECT_EQ(text.str(), "\"\\\"\\\\\\n\\r\\t\\u0000\\u001f\x7F/\xC3\xA9\"");
}

TEST_F(JsonOutput, IndentsNoFurtherThanFortyLevels) {
    for (int i = 0; i < 500; ++i) {
        out.beginArray();
    }
    for (int i = 0; i < 500; ++i) {
        out.endArray();
    }
    EXPECT_LT(text.str().size(), 500U * 2 * 83);
}

TEST_F(JsonOutput, RaisesAtItsLimit) {
    Inspection::JsonOutput limited(text, 10);
    limited.text("12345678");
    EXPECT_THROW(limited.text("1"), Inspection::Error);
}

} // namespace
