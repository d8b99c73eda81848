#include "Platform/Foundation/Nesting.h"

#include "Platform/Foundation/Limits.h"
#include "Platform/Foundation/Testing/RaisedException.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <thread>

namespace {

// Goes down to a depth, a visit at each level.
void descend(std::size_t depth) {
    const NS::NestedVisit visit;
    if (depth > 1) {
        descend(depth - 1);
    }
}

TEST(NestedVisit, RaisesBeyondItsDepth) {
    EXPECT_EQ(Tests::nameOfException([] { descend(NS::Limits::kDepth); }), "none");
    EXPECT_EQ(Tests::nameOfException([] { descend(NS::Limits::kDepth + 1); }),
              NS::kGenericException);
    EXPECT_EQ(Tests::nameOfException([] { descend(NS::Limits::kDepth); }), "none");
}

TEST(NestedVisit, RaisesBeyondItsNumberWithinOneOperation) {
    const auto visitOften = [] {
        const NS::NestedVisit outermost;
        for (int i = 0; i < 1'000'000; ++i) {
            const NS::NestedVisit visit;
        }
    };
    EXPECT_EQ(Tests::nameOfException(visitOften), NS::kGenericException);
}

TEST(NestedVisit, CountsEachOperationByItself) {
    const auto visitOneByOne = [] {
        for (int i = 0; i < 1'000'001; ++i) {
            const NS::NestedVisit visit;
        }
    };
    EXPECT_NO_THROW(visitOneByOne());
}

TEST(NestedVisit, CountsEachThreadByItself) {
    const NS::NestedVisit here;
    std::string name;
    std::thread([&] { name = Tests::nameOfException([] { descend(NS::Limits::kDepth); }); }).join();
    EXPECT_EQ(name, "none");
    EXPECT_EQ(Tests::nameOfException([] { descend(NS::Limits::kDepth); }), NS::kGenericException);
}

} // namespace
