#pragma once

#include "Platform/Foundation/Object.h"

#include <cstddef>
#include <utility>
#include <vector>

namespace NS {

// What is known of an operation before it is called: how many arguments it takes.
class MethodSignature final : public Object {
    NS_OBJECT(MethodSignature)
  public:
    // The signature of the target's method for a selector; nil when it does not respond to it.
    static RefPtr<MethodSignature> signatureForSelector(const Object& target, Selector selector);

    explicit MethodSignature(std::size_t parameterCount) noexcept
        : parameterCount_(parameterCount) {}

    // The target and the selector count as arguments 0 and 1, the operation's own begin at 2.
    std::size_t numberOfArguments() const noexcept { return parameterCount_ + kFirstParameter; }

    static constexpr std::size_t kFirstParameter = 2;

  private:
    std::size_t parameterCount_;
};

// A call that can be kept, filled with arguments and made again and again.
//
// Keeps its target and its arguments alive from the moment they are set, until others take their
// place. Belongs to one thread.
class Invocation final : public Object {
    NS_OBJECT(Invocation)
  public:
    // Raises NSInvalidArgumentException for a nil signature.
    explicit Invocation(const RefPtr<MethodSignature>& signature);

    const RefPtr<Object>& target() const noexcept { return target_; }
    void setTarget(RefPtr<Object> target) { target_ = std::move(target); }
    Selector selector() const noexcept { return selector_; }
    // The text must outlive the invocation.
    void setSelector(Selector selector) noexcept { selector_ = selector; }

    // The arguments of the operation itself begin at index 2. Raise NSInvalidArgumentException for
    // an index that the signature does not have.
    void setArgument_atIndex(RefPtr<Object> argument, std::size_t index);
    RefPtr<Object> argumentAtIndex(std::size_t index) const;

    // Calls the target; a nil target is no call. The call may change this invocation, or make it
    // again. Raises NSInvalidArgumentException when the target does not respond to the selector
    // with as many arguments, and whatever the operation raises.
    void invoke();

  private:
    std::size_t checkedIndex(const char* operation, std::size_t index) const;

    RefPtr<Object> target_;
    Selector selector_{};
    std::vector<RefPtr<Object>> arguments_;
};

} // namespace NS
