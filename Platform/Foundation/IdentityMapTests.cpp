#include "Platform/Foundation/IdentityMap.h"

#include "Platform/Foundation/String.h"

#include <gtest/gtest.h>

namespace {

TEST(IdentityMap, KeepsANumberForEachOfManyObjects) {
    std::vector<NS::Ref<NS::String>> objects;
    NS::IdentityMap map;
    for (std::uint32_t i = 1; i <= 10000; ++i) {
        objects.push_back(NS::str("same text"));
        std::uint32_t& number = map.numberOf(objects.back().get());
        ASSERT_EQ(number, 0U);
        number = i;
    }
    for (std::uint32_t i = 1; i <= 10000; ++i) {
        ASSERT_EQ(map.numberOf(objects[i - 1].get()), i);
    }
}

TEST(IdentityMap, TakesAndKeepsNumbersWhateverRoomWasMade) {
    std::vector<NS::Ref<NS::String>> objects;
    NS::IdentityMap map;
    for (std::uint32_t i = 1; i <= 2000; ++i) {
        map.reserve(i % 100 == 0 ? i * 3 / 2 : 0);
        objects.push_back(NS::str("same text"));
        map.numberOf(objects.back().get()) = i;
    }
    for (std::uint32_t i = 1; i <= 2000; ++i) {
        ASSERT_EQ(map.numberOf(objects[i - 1].get()), i);
    }
}

} // namespace
