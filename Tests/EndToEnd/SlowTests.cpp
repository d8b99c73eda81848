#include "Tests/EndToEnd/ExtensionProcess.h"

#include <chrono>

namespace {

using namespace std::chrono_literals;

class ExtensionWithoutAHost : public Tests::ProcessTest {};

TEST_F(ExtensionWithoutAHost, GivesUpAfterTwoMinutesWithStatus1) {
    const auto start = std::chrono::steady_clock::now();
    auto extension = startExtension();
    EXPECT_EQ(extension.waitForExit(180s), 1);
    EXPECT_GE(std::chrono::steady_clock::now() - start, 119s);
    EXPECT_LE(std::chrono::steady_clock::now() - start, 130s);
    EXPECT_EQ(extension.errors(), "");
}

} // namespace
