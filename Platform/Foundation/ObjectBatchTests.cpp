#include "Platform/Foundation/ObjectBatch.h"

#include "Platform/Foundation/BlockPool.h"
#include "Platform/Foundation/Number.h"
#include "Platform/Foundation/String.h"

#include <gtest/gtest.h>
#include <sanitizer/asan_interface.h>

#include <cstdint>
#include <optional>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

namespace {

using NS::ObjectBatch;
using Objects = std::vector<NS::Ref<NS::Object>>;

Objects numbers(std::size_t count) {
    Objects objects;
    for (std::size_t i = 0; i < count; ++i) {
        objects.emplace_back(NS::Number::numberWithLongLong(static_cast<std::int64_t>(i)));
    }
    return objects;
}

std::int64_t valueOf(const NS::Ref<NS::Object>& number) {
    return NS::longLongValue(number);
}

bool standsAlone(const NS::Object& object) {
    return reinterpret_cast<std::uintptr_t>(&object) % __STDCPP_DEFAULT_NEW_ALIGNMENT__ == 0;
}

TEST(ObjectBatch, HasSmallObjectsStandTogether) {
    const ObjectBatch batch;
    (void)numbers(ObjectBatch::kFirstObjects);
    const auto objects = numbers(3);
    const auto address = [&](std::size_t i) {
        return reinterpret_cast<std::uintptr_t>(objects[i].get());
    };
    EXPECT_EQ(address(1) - address(0), 32U);
    EXPECT_EQ(address(2) - address(1), 32U);
}

TEST(ObjectBatch, LeavesItsFirstObjectsAlone) {
    const ObjectBatch batch;
    const auto objects = numbers(ObjectBatch::kFirstObjects + 1);
    EXPECT_TRUE(standsAlone(*objects[ObjectBatch::kFirstObjects - 1]));
    EXPECT_FALSE(standsAlone(*objects[ObjectBatch::kFirstObjects]));
}

TEST(ObjectBatch, LeavesLargeObjectsAlone) {
    const ObjectBatch batch;
    (void)numbers(ObjectBatch::kFirstObjects);
    const std::string characters(ObjectBatch::kLargestObject, 'a');
    const auto text = NS::str(characters);
    EXPECT_TRUE(standsAlone(*text));
    EXPECT_EQ(text->utf8(), characters);
}

TEST(ObjectBatch, IsOverAtItsEnd) {
    {
        const ObjectBatch batch;
        (void)numbers(ObjectBatch::kFirstObjects);
        EXPECT_FALSE(standsAlone(*NS::str("within")));
    }
    EXPECT_TRUE(standsAlone(*NS::str("behind")));
}

TEST(ObjectBatch, LeavesObjectsThatAreStillReferredTo) {
    std::optional<ObjectBatch> batch(std::in_place);
    auto objects = numbers(1000);
    batch.reset();
    const auto kept = objects[777];
    objects.clear();
    EXPECT_EQ(valueOf(kept), 777);
}

TEST(ObjectBatch, GivesBlocksBackWhenTheirObjectsHaveEnded) {
    const auto make = [] {
        const ObjectBatch batch;
        return numbers(100'000);
    };
    auto objects = make();
    const std::size_t regions = NS::BlockPool::shared().regionCount();
    for (int i = 0; i < 10; ++i) {
        objects.clear();
        objects = make();
    }
    EXPECT_EQ(NS::BlockPool::shared().regionCount(), regions);
}

#ifdef __SANITIZE_ADDRESS__
TEST(ObjectBatch, LetsTheSanitiserSeeWhoReadsAnObjectThatEnded) {
    const ObjectBatch batch;
    auto objects = numbers(100);
    auto* const last = reinterpret_cast<std::byte*>(objects.back().get());
    ASSERT_FALSE(standsAlone(*objects.back()));
    objects.pop_back();
    EXPECT_TRUE(__asan_address_is_poisoned(last));
    EXPECT_TRUE(__asan_address_is_poisoned(last + sizeof(NS::Number) - 1));
}
#endif

TEST(ObjectBatch, MayStandWithinAnother) {
    const ObjectBatch outer;
    auto objects = numbers(100);
    {
        const ObjectBatch inner;
        const auto more = numbers(100);
        objects.insert(objects.end(), more.begin(), more.end());
    }
    const auto last = numbers(100);
    objects.insert(objects.end(), last.begin(), last.end());
    for (std::size_t i = 0; i < objects.size(); ++i) {
        ASSERT_EQ(valueOf(objects[i]), static_cast<std::int64_t>(i % 100));
    }
}

TEST(ObjectBatch, GivesTheStorageOfAnObjectBackThatRaisesWhenItIsMade) {
    class Raising final : public NS::Object {
      public:
        Raising() { throw std::runtime_error("none"); }
    };
    const ObjectBatch batch;
    (void)numbers(ObjectBatch::kFirstObjects + 1);
    EXPECT_THROW(NS::make<Raising>(), std::runtime_error);
    EXPECT_EQ(valueOf(numbers(1).front()), 0);
}

TEST(ObjectBatch, HasObjectsForAnyThread) {
    Objects mine;
    Objects others;
    {
        const ObjectBatch batch;
        for (auto& object : numbers(20'000)) {
            (valueOf(object) % 2 == 0 ? mine : others).push_back(object);
        }
    }
    std::thread other([&] { others.clear(); });
    mine.clear();
    other.join();
    EXPECT_EQ(valueOf(numbers(5).back()), 4);
}

TEST(ObjectBatch, IsTheThreadsOwn) {
    const ObjectBatch batch;
    (void)numbers(ObjectBatch::kFirstObjects);
    std::thread([] { EXPECT_TRUE(standsAlone(*NS::str("another thread's"))); }).join();
}

} // namespace
