#include "Platform/Foundation/Ref.h"

#include "Platform/Foundation/Array.h"
#include "Platform/Foundation/Object.h"
#include "Platform/Foundation/String.h"

#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace {

// Tells when it ends.
class Mortal : public NS::Object {
  public:
    explicit Mortal(bool& ended) noexcept : ended_(ended) {}
    ~Mortal() override { ended_ = true; }

  private:
    bool& ended_;
};

class DerivedMortal final : public Mortal {
  public:
    using Mortal::Mortal;
};

class ReferenceTest : public testing::Test {
  protected:
    bool ended = false;
};

using Ref = ReferenceTest;
using RefPtr = ReferenceTest;

TEST_F(Ref, HoldsTheOnlyReferenceToANewObject) {
    const auto object = NS::make<Mortal>(ended);
    EXPECT_EQ(object->referenceCount(), 1U);
    EXPECT_FALSE(ended);
}

TEST_F(Ref, EndsTheObjectWithTheLastReference) {
    {
        const auto object = NS::make<Mortal>(ended);
        {
            const NS::Ref<Mortal> second = object; // NOLINT: the copy is what is tested
            EXPECT_EQ(object->referenceCount(), 2U);
        }
        EXPECT_FALSE(ended);
        EXPECT_EQ(object->referenceCount(), 1U);
    }
    EXPECT_TRUE(ended);
}

TEST_F(Ref, MovesWithoutCounting) {
    auto object = NS::make<DerivedMortal>(ended);
    const Mortal* const address = object.get();
    const NS::Ref<Mortal> moved = std::move(object);
    EXPECT_EQ(moved.get(), address);
    EXPECT_EQ(moved->referenceCount(), 1U);
}

TEST_F(Ref, AssignmentReleasesWhatItReferredTo) {
    bool otherEnded = false;
    NS::Ref<Mortal> object = NS::make<Mortal>(ended);
    const auto other = NS::make<Mortal>(otherEnded);
    object = other;
    EXPECT_TRUE(ended);
    EXPECT_EQ(object, other);
    EXPECT_EQ(other->referenceCount(), 2U);
}

TEST_F(Ref, SurvivesAssignmentToItself) {
    NS::Ref<Mortal> object = NS::make<Mortal>(ended);
    const NS::Ref<Mortal>& same = object;
    object = same;
    EXPECT_FALSE(ended);
    EXPECT_EQ(object->referenceCount(), 1U);
}

TEST_F(Ref, AddsAReferenceToAnObjectThatOthersHold) {
    const auto object = NS::make<Mortal>(ended);
    const NS::Ref<Mortal> second(*object);
    EXPECT_EQ(object->referenceCount(), 2U);
}

TEST_F(Ref, GivesItsReferenceAway) {
    auto object = NS::make<Mortal>(ended);
    Mortal* const given = object.leak();
    EXPECT_FALSE(ended);
    given->release();
    EXPECT_TRUE(ended);
}

TEST_F(Ref, ComparesIdentity) {
    const auto a = NS::str("text");
    const auto b = NS::str("text");
    EXPECT_TRUE(a == NS::Ref<NS::Object>(a));
    EXPECT_FALSE(a == b);
    EXPECT_TRUE(a != b);
    EXPECT_TRUE(a == NS::RefPtr<NS::String>(a));
    EXPECT_FALSE(a == NS::RefPtr<NS::Object>(b));
}

TEST_F(RefPtr, IsNilFromTheStart) {
    const NS::RefPtr<Mortal> nothing;
    EXPECT_FALSE(nothing);
    EXPECT_TRUE(nothing == nullptr);
    EXPECT_EQ(nothing.get(), nullptr);
    EXPECT_TRUE(nothing == NS::RefPtr<NS::Object>());
}

TEST_F(RefPtr, KeepsTheObjectAliveUntilItIsCleared) {
    NS::RefPtr<NS::Object> reference = NS::make<DerivedMortal>(ended);
    EXPECT_TRUE(reference);
    EXPECT_FALSE(ended);
    reference = nullptr;
    EXPECT_TRUE(ended);
}

TEST_F(RefPtr, LeavesNilBehindWhenItMoves) {
    NS::RefPtr<Mortal> reference = NS::make<Mortal>(ended);
    const NS::RefPtr<NS::Object> moved = std::move(reference);
    EXPECT_TRUE(reference == nullptr); // NOLINT: the state after the move is what is tested
    EXPECT_EQ(moved->referenceCount(), 1U);
}

TEST_F(RefPtr, AdoptsAReferenceThatIsHeldAlready) {
    auto object = NS::make<Mortal>(ended);
    const NS::RefPtr<Mortal> adopted(object.leak(), NS::kAdopt);
    EXPECT_EQ(adopted->referenceCount(), 1U);
}

TEST_F(RefPtr, SurvivesTheEndOfWhatItsObjectHolds) {
    // The list's first object is held by nothing else, and replaces the list itself.
    NS::RefPtr<NS::Object> reference = NS::Array::arrayWithObjects({NS::make<Mortal>(ended)});
    reference = NS::as<NS::Array>(reference)->firstObject();
    EXPECT_FALSE(ended);
    EXPECT_EQ(reference->referenceCount(), 1U);
}

TEST(ReferenceCount, IsExactAfterManyThreadsCounted) {
    const auto object = NS::str("shared");
    std::vector<std::thread> threads;
    for (int thread = 0; thread < 4; ++thread) {
        threads.emplace_back([&object] {
            for (int i = 0; i < 5000; ++i) {
                const NS::RefPtr<NS::Object> copy = object;
                const NS::RefPtr<NS::Object> second = copy; // NOLINT: the copy is what is tested
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(object->referenceCount(), 1U);
}

TEST(ReferenceCount, LetsTheLastOfSeveralThreadsEndTheObject) {
    for (int round = 0; round < 200; ++round) {
        bool ended = false;
        NS::RefPtr<Mortal> here = NS::make<Mortal>(ended);
        std::thread there([copy = here]() mutable { copy = nullptr; });
        here = nullptr;
        there.join();
        EXPECT_TRUE(ended);
    }
}

} // namespace
