#include "Programs/Inspect/FiniteNumbers.h"

#include <gtest/gtest.h>

namespace {

using Inspection::withFiniteNumbers;

TEST(FiniteNumbers, LeaveATextAloneThatHasNoOthers) {
    for (const char* const json :
         {"", "{}", "[1e308,-1.7e308,1e-400,18446744073709551616]", R"(["1e400",{"1e400":1}])",
          R"("\"1e400")", R"("\\\"1e400)", R"("1e400\)"}) {
        const auto finite = withFiniteNumbers(json);
        EXPECT_TRUE(finite.overflowing.empty()) << json;
        EXPECT_EQ(finite.json, "") << json;
    }
}

TEST(FiniteNumbers, StandForOthersAtTheirPlaces) {
    const auto finite = withFiniteNumbers(R"([1,"2\\",1e400 ,-3.5E+999,{"4":-0.1e310}])");
    EXPECT_EQ(finite.json, R"([1,"2\\",1.0   ,-1.0     ,{"4":-1.0    }])");
    EXPECT_EQ(finite.overflowing, (std::vector<std::size_t>{1, 2, 3}));
}

TEST(FiniteNumbers, StandForIntegersOfHundredsOfDigits) {
    const auto finite = withFiniteNumbers('-' + std::string(400, '9'));
    EXPECT_EQ(finite.json, "-1.0" + std::string(397, ' '));
    EXPECT_EQ(finite.overflowing, std::vector<std::size_t>{0});
    EXPECT_TRUE(withFiniteNumbers(std::string(308, '9')).overflowing.empty());
}

} // namespace
