#include "Platform/CrashReporter/AlternateStack.h"

#include <gtest/gtest.h>

#include <csignal>
#include <optional>
#include <thread>

namespace {

stack_t current() {
    stack_t stack{};
    (void)::sigaltstack(nullptr, &stack);
    return stack;
}

// Each on a thread of its own, so that none leaves another without.
TEST(AlternateStack, IsTheThreadsOwnWhileItLives) {
    std::thread([] {
        const stack_t before = current();
        {
            const NS::AlternateStack stack;
            EXPECT_EQ(current().ss_flags, 0);
            EXPECT_EQ(current().ss_size, NS::AlternateStack::kBytes);
            EXPECT_NE(current().ss_sp, before.ss_sp);
        }
        EXPECT_EQ(current().ss_flags, before.ss_flags);
        EXPECT_EQ(current().ss_sp, before.ss_sp);
    }).join();
}

TEST(AlternateStack, GivesBackTheOneBefore) {
    std::thread([] {
        const NS::AlternateStack outer;
        const stack_t before = current();
        {
            const NS::AlternateStack inner;
            EXPECT_NE(current().ss_sp, before.ss_sp);
        }
        EXPECT_EQ(current().ss_sp, before.ss_sp);
        EXPECT_EQ(current().ss_size, before.ss_size);
    }).join();
}

volatile bool ranOnIt = false;

void noteItsStack(int) {
    const stack_t stack = current();
    ranOnIt = (stack.ss_flags & SS_ONSTACK) != 0;
}

TEST(AlternateStack, CarriesAHandlerThatAsksForOne) {
    std::thread([] {
        const NS::AlternateStack stack;
        struct sigaction action {};
        action.sa_handler = &noteItsStack;
        action.sa_flags = SA_ONSTACK;
        struct sigaction before {};
        (void)::sigaction(SIGUSR1, &action, &before);
        (void)std::raise(SIGUSR1);
        (void)::sigaction(SIGUSR1, &before, nullptr);
    }).join();
    EXPECT_TRUE(ranOnIt);
}

} // namespace
