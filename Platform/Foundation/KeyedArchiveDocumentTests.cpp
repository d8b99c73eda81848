#include "Platform/Foundation/Array.h"
#include "Platform/Foundation/KeyedArchiver.h"
#include "Platform/Foundation/String.h"
#include "Platform/Foundation/Testing/HandWrittenList.h"

#include <gtest/gtest.h>

#include <fstream>
#include <regex>
#include <string>

namespace {

// The bytes of the lines that look like "    01a  4e 53  what they are".
std::string bytesOfDocument(const std::string& path) {
    const std::regex line("    [0-9a-f]{3} ((?: [0-9a-f]{2}){1,8})(?: .*)?");
    std::ifstream document(path);
    std::string digits;
    for (std::string text; std::getline(document, text);) {
        std::smatch match;
        if (std::regex_match(text, match, line)) {
            digits += match[1];
        }
    }
    std::erase(digits, ' ');
    return Tests::bytesFromHex(digits);
}

TEST(KeyedArchiveDocument, ShowsTheBytesThatTheWriterWrites) {
    const auto path = NS::str("/Docs");
    const auto archive = NS::KeyedArchiver::archivedDataWithRootObject(
        NS::Array::arrayWithObjects({path, NS::str("/\xC3\xA9"), path}));
    EXPECT_EQ(bytesOfDocument(QUORVANE_SOURCE_DIR "/Docs/keyed-archives.md"),
              NS::charactersOf(archive->bytes()));
}

} // namespace
