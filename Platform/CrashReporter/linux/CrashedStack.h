#pragma once

#include <array>
#include <csignal>
#include <cstddef>
#include <cstdint>
#include <span>
#include <ucontext.h>

namespace NS {

struct CrashedFrame {
    std::uintptr_t address;
    // The instruction that the address names was being run; any other frame's is the one to be
    // returned to, behind a call.
    bool interrupted;
};

// The call stack of the crashed thread, innermost first. Of one that is very deep, as a recursion
// without an end makes it, the outer frames are those that tell who began it: what is left out
// stands between the two. In storage of its own, to be made before it is needed. Safe in a signal
// handler.
class CrashedStack {
  public:
    static constexpr std::size_t kInner = 480;
    static constexpr std::size_t kOuter = 32;
    // A damaged stack may go round in circles.
    static constexpr std::size_t kDeepest = 1'000'000;

    // Called once, so that the first crash does not make the unwinder set itself up.
    static void prepare() noexcept;

    // From where a signal broke in. Faults where the stack is damaged, with the frames taken so far
    // in place. The context's place is perhaps another afterwards, for the caller to put back.
    void readFrom(const siginfo_t& info, ucontext_t& context) noexcept;
    // From a list of return addresses.
    void readFrom(std::span<void* const> returnAddresses) noexcept;

    std::span<const CrashedFrame> inner() const noexcept;
    std::size_t leftOut() const noexcept;
    // The outer frame of an index counted from the end of what is left out.
    const CrashedFrame& outer(std::size_t index) const noexcept;
    std::size_t outerCount() const noexcept;

    void add(CrashedFrame frame) noexcept;
    std::size_t depth() const noexcept { return depth_; }

  private:
    std::array<CrashedFrame, kInner> inner_{};
    // A ring.
    std::array<CrashedFrame, kOuter> outer_{};
    std::size_t depth_ = 0;
};

} // namespace NS
