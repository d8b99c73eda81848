#include "Platform/Foundation/XMLPropertyList.h"

#include "Platform/Foundation/Testing/ArchiveText.h"

#include <gtest/gtest.h>

#include <string>

namespace {

constexpr std::string_view kProlog =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
    "<!DOCTYPE plist PUBLIC \"-//Example//DTD PLIST 1.0//EN\" \"http://localhost/plist.dtd\">\n";

class XMLPropertyList : public testing::Test {
  protected:
    // The list on one line, or why there is none.
    static std::string textOf(std::string_view xml) {
        EXPECT_TRUE(NS::isXMLPropertyList(NS::bytesOf(xml)));
        std::string reason;
        const auto list = NS::binaryListOfXML(NS::bytesOf(xml), reason);
        return list ? Tests::textOfList(NS::Data::dataWithBytes(*list)) : reason;
    }
    static std::string textOfValue(std::string_view value) {
        return textOf(std::string(kProlog) + "<plist version=\"1.0\">" + std::string(value) +
                      "</plist>\n");
    }
    static std::string nested(std::size_t depth) {
        std::string value;
        for (std::size_t i = 0; i < depth; ++i) {
            value += "<array>";
        }
        for (std::size_t i = 0; i < depth; ++i) {
            value += "</array>";
        }
        return value;
    }
};

TEST_F(XMLPropertyList, HasEveryKindOfValue) {
    EXPECT_EQ(textOfValue("<dict>\n"
                          "  <key>b</key> <array><true/><false></false></array>\n"
                          "  <key>a</key> <integer>-3</integer>\n"
                          "  <key></key>  <real>0.5</real>\n"
                          "  <key>d</key> <data>\n  AP8=\n  </data>\n"
                          "  <key>e</key> <dict/>\n"
                          "  <key>f</key> <string></string>\n"
                          "  <key>g</key> <date>2001-01-01T00:00:01Z</date>\n"
                          "</dict>"),
              "{b=[true, false], a=-3, =0.5, d=<00ff>, e={}, f=\"\", g=@1}");
}

TEST_F(XMLPropertyList, KeepsTheTextOfAString) {
    EXPECT_EQ(textOfValue("<string> a\r\n b </string>"), "\" a\n b \"");
    EXPECT_EQ(textOfValue("<string>&lt;&gt;&amp;&quot;&apos;&#x41;&#66;</string>"), "\"<>&\"'AB\"");
    EXPECT_EQ(textOfValue("<string>a<!-- not this -->b<![CDATA[<c>&amp;]]><?or this?></string>"),
              "\"ab<c>&amp;\"");
}

TEST_F(XMLPropertyList, PassesOverBlanksAroundAValue) {
    EXPECT_EQ(textOfValue("<array><integer>\n 7\t</integer><real> 0.5\r\n</real>"
                          "<date>\n  2001-01-01T00:00:01Z\n</date><data> \nAA== </data>"
                          "<true> </true></array>"),
              "[7, 0.5, @1, <00>, true]");
}

TEST_F(XMLPropertyList, HasUtf16ForTextBeyondAscii) {
    EXPECT_EQ(textOfValue("<string>\xC3\xA9&#x1F600;</string>"), "u\"00e9d83dde00\"");
}

TEST_F(XMLPropertyList, TakesADictionaryOfTheOneKeyForAUid) {
    EXPECT_EQ(textOfValue("<dict><key>CF$UID</key><integer>70000</integer></dict>"), "#70000");
    EXPECT_EQ(textOfValue("<array><dict><key>CF$UID</key><integer>0</integer></dict>"
                          "<dict><key>CF$UID</key><integer> 0x1 </integer></dict></array>"),
              "[#0, #1]");
}

TEST_F(XMLPropertyList, TakesAnyOtherDictionaryForItself) {
    EXPECT_EQ(textOfValue("<dict><key>CF$UID</key><integer>1</integer>"
                          "<key>a</key><integer>2</integer></dict>"),
              "{CF$UID=1, a=2}");
    EXPECT_EQ(textOfValue("<dict><key>a</key><integer>2</integer>"
                          "<key>CF$UID</key><integer>1</integer></dict>"),
              "{a=2, CF$UID=1}");
    EXPECT_EQ(textOfValue("<dict><key>CF$UID</key><string>1</string></dict>"), "{CF$UID=\"1\"}");
    EXPECT_EQ(textOfValue("<dict><key>CF$UID</key><integer>-1</integer></dict>"), "{CF$UID=-1}");
}

TEST_F(XMLPropertyList, NeedsNoPrologAndTakesAByteOrderMark) {
    EXPECT_EQ(textOf("<plist><true/></plist>"), "true");
    EXPECT_EQ(textOf("\n <plist><true/></plist>"), "true");
    EXPECT_EQ(textOf("\xEF\xBB\xBF<?xml version=\"1.0\"?><plist><true/></plist>"), "true");
}

TEST_F(XMLPropertyList, IsReadInUtf16) {
    const std::string ascii = "<plist><string>a</string></plist>";
    std::string little = "\xFF\xFE";
    std::string big = "\xFE\xFF";
    for (const char c : ascii) {
        little += {c, '\0'};
        big += {'\0', c};
    }
    EXPECT_EQ(textOf(little), "\"a\"");
    EXPECT_EQ(textOf(big), "\"a\"");
}

TEST_F(XMLPropertyList, IsReadInLatin1) {
    EXPECT_EQ(textOf("<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?>"
                     "<plist><string>\xE9</string></plist>"),
              "u\"00e9\"");
}

TEST_F(XMLPropertyList, IsToldFromOtherBytesByItsBeginning) {
    for (const std::string_view bytes : {"", " ", "bplist00", "text", "\xEF\xBB\xBF", "{<"}) {
        EXPECT_FALSE(NS::isXMLPropertyList(NS::bytesOf(bytes))) << bytes;
    }
}

TEST_F(XMLPropertyList, IsRefusedWithTheReasonAndTheLine) {
    constexpr std::pair<std::string_view, std::string_view> kRows[] = {
        {"",                                      "a plist without a value on line 3"                   },
        {"<true/>\n<true/>",                      "a second value within plist on line 4"               },
        {"<dict><true/></dict>",                  "keys and values do not take turns on line 3"         },
        {"<dict><key>a</key><key>b</key></dict>", "keys and values do not take turns on line 3"         },
        {"<dict><key>a</key></dict>",             "a key without a value on line 3"                     },
        {"<key>a</key>",                          "keys and values do not take turns on line 3"         },
        {"<array><key>a</key></array>",           "keys and values do not take turns on line 3"         },
        {"<plist><true/></plist>",                "plist is not the outermost element on line 3"        },
        {"<set/>",                                "an element that property lists do not have on line 3"},
        {"<string><true/></string>",              "an element within a plain value on line 3"           },
        {"<array>text</array>",                   "text outside of an element for it on line 3"         },
        {"<true>1</true>",                        "text within a truth value on line 3"                 },
        {"<integer>1.5</integer>",                "no integer of 64 bits on line 3"                     },
        {"<real>one</real>",                      "no real number on line 3"                            },
        {"<date>yesterday</date>",                "no date on line 3"                                   },
        {"<data>A</data>",                        "no data in base 64 on line 3"                        },
        {"<array>",                               "mismatched tag on line 3"                            },
        {"<string>&other;</string>",              "an entity that XML itself does not define on line 3" },
        {"<string>&#xD800;</string>",             "reference to invalid character number on line 3"     },
        {"<string>\x01</string>",                 "not well-formed (invalid token) on line 3"           },
        {"<string>\xFF</string>",                 "not well-formed (invalid token) on line 3"           },
    };
    for (const auto& [value, reason] : kRows) {
        EXPECT_EQ(textOfValue(value), reason) << value;
    }
    EXPECT_EQ(textOf("<true/>"), "plist is not the outermost element on line 1");
}

TEST_F(XMLPropertyList, DefinesNoEntities) {
    for (const std::string_view declaration :
         {"<!ENTITY a \"b\">", "<!ENTITY a SYSTEM \"file:///etc/hostname\">", "<!ENTITY % a \"b\">",
          "<!ENTITY % a SYSTEM \"file:///etc/hostname\">"}) {
        EXPECT_EQ(textOf("<!DOCTYPE plist [" + std::string(declaration) +
                         "]><plist><string>&a;</string></plist>"),
                  "a document type that defines entities on line 1")
            << declaration;
    }
}

TEST_F(XMLPropertyList, NestsAsDeepAsTheLimit) {
    EXPECT_EQ(textOfValue(nested(513)).substr(0, 2), "[[");
    EXPECT_EQ(textOfValue(nested(514)), "collections stand too deep within one another on line 3");
    EXPECT_EQ(textOfValue(nested(1'000'000)),
              "collections stand too deep within one another on line 3");
}

TEST_F(XMLPropertyList, IsRefusedWhereverItIsCutOff) {
    const std::string whole = std::string(kProlog) +
                              "<plist version='1.0'><dict><key>k</key><string>&amp;v</string>"
                              "<key>u</key><dict><key>CF$UID</key><integer>1</integer></dict>"
                              "</dict></plist>";
    ASSERT_EQ(textOf(whole), "{k=\"&v\", u=#1}");
    for (std::size_t length = 1; length < whole.size(); ++length) {
        std::string reason;
        EXPECT_FALSE(NS::binaryListOfXML(NS::bytesOf(whole.substr(0, length)), reason));
        EXPECT_NE(reason.find(" on line "), std::string::npos);
    }
}

// A key that a million dictionaries have is one object of the list.
TEST_F(XMLPropertyList, WritesAKeyOnce) {
    std::string xml = "<plist><array>";
    for (int i = 0; i < 1000; ++i) {
        xml += "<dict><key>a key of some length</key><true/></dict>";
    }
    std::string reason;
    const auto list = NS::binaryListOfXML(NS::bytesOf(xml + "</array></plist>"), reason);
    ASSERT_TRUE(list) << reason;
    EXPECT_LT(list->size(), 16'000U);
}

} // namespace
