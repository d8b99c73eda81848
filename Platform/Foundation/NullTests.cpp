#include "Platform/Foundation/Null.h"

#include "Platform/Foundation/String.h"

#include <gtest/gtest.h>

namespace {

TEST(Null, IsOneObject) {
    EXPECT_EQ(NS::Null::null(), NS::Null::null());
    EXPECT_TRUE(NS::Null::null()->isEqual(NS::Null::null().get()));
    EXPECT_FALSE(NS::Null::null()->isEqual(nullptr));
}

TEST(Null, DescribesItselfInAngleBrackets) {
    EXPECT_EQ(NS::Null::null()->description()->utf8(), "<null>");
}

} // namespace
