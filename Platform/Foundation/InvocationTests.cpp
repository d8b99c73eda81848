#include "Platform/Foundation/Invocation.h"

#include "Platform/Foundation/Number.h"
#include "Platform/Foundation/String.h"
#include "Platform/Foundation/Testing/RaisedException.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

namespace {

using NS::Invocation;
using NS::MethodSignature;
using NS::Selector;
using NS::str;

constexpr Selector kReset{"reset"};
constexpr Selector kMove{"move:to:"};

// Notes the calls that reach it.
class Receiver : public NS::Object {
    NS_OBJECT(Receiver)
  public:
    void reset() { note("reset"); }
    void move_to(NS::RefPtr<NS::String> what, const NS::RefPtr<NS::Object>& where) {
        note("move " + (what ? what->utf8() : "nil") + " to " +
             (where ? where->description()->utf8() : "nil"));
    }

    std::vector<std::string> calls;
    std::function<void()> whenCalled = [] {
    };

  private:
    void note(const std::string& call) {
        calls.push_back(call);
        whenCalled();
    }
};

constexpr NS::Method kReceiverMethods[] = {
    NS::method<&Receiver::reset>("reset"),
    NS::method<&Receiver::move_to>("move:to:"),
};
constinit const NS::Class Receiver::kClass{
    .name = "Receiver", .superclass = &NS::Object::kClass, .methods = kReceiverMethods};

class InvocationTest : public testing::Test {
  protected:
    NS::Ref<Invocation> invocationOf(Selector selector) const {
        const auto invocation =
            NS::make<Invocation>(MethodSignature::signatureForSelector(*receiver, selector));
        invocation->setTarget(receiver);
        invocation->setSelector(selector);
        return invocation;
    }

    const NS::Ref<Receiver> receiver = NS::make<Receiver>();
};

using Calls = std::vector<std::string>;

TEST_F(InvocationTest, TakesItsArityFromTheTargetsSignature) {
    EXPECT_EQ(MethodSignature::signatureForSelector(*receiver, kReset)->numberOfArguments(), 2U);
    EXPECT_EQ(MethodSignature::signatureForSelector(*receiver, kMove)->numberOfArguments(), 4U);
}

TEST_F(InvocationTest, HasNoSignatureForWhatTheTargetDoesNotRespondTo) {
    EXPECT_EQ(MethodSignature::signatureForSelector(*receiver, {"reset:"}), nullptr);
    EXPECT_EQ(MethodSignature::signatureForSelector(*receiver, {""}), nullptr);
    const auto act = [] {
        (void)NS::make<Invocation>(NS::RefPtr<MethodSignature>());
    };
    EXPECT_EQ(Tests::nameOfException(act), NS::kInvalidArgumentException);
    EXPECT_EQ(Tests::reasonOfException(act), "+[NSInvocation invocationWithMethodSignature:]: "
                                             "method signature argument cannot be nil");
}

TEST_F(InvocationTest, CallsItsTargetWithItsArguments) {
    const auto invocation = invocationOf(kMove);
    invocation->setArgument_atIndex(str("a"), 2);
    invocation->setArgument_atIndex(NS::Number::numberWithInt(3), 3);
    invocation->invoke();
    EXPECT_EQ(receiver->calls, Calls{"move a to 3"});
    invocationOf(kReset)->invoke();
    EXPECT_EQ(receiver->calls, (Calls{"move a to 3", "reset"}));
}

TEST_F(InvocationTest, PassesNilForArgumentsThatAreNotSet) {
    invocationOf(kMove)->invoke();
    EXPECT_EQ(receiver->calls, Calls{"move nil to nil"});
}

TEST_F(InvocationTest, CanBeMadeAgainWithTheSameArguments) {
    const auto invocation = invocationOf(kMove);
    invocation->setArgument_atIndex(str("a"), 2);
    invocation->invoke();
    invocation->setArgument_atIndex(str("b"), 3);
    invocation->invoke();
    EXPECT_EQ(receiver->calls, (Calls{"move a to nil", "move a to b"}));
    EXPECT_EQ(invocation->argumentAtIndex(3)->description()->utf8(), "b");
}

TEST_F(InvocationTest, RaisesForAnIndexThatTheSignatureDoesNotHave) {
    const auto invocation = invocationOf(kMove);
    for (const std::size_t index :
         {std::size_t{0}, std::size_t{1}, std::size_t{4}, ~std::size_t{0}}) {
        EXPECT_EQ(Tests::nameOfException([&] { invocation->setArgument_atIndex(nullptr, index); }),
                  NS::kInvalidArgumentException);
        EXPECT_EQ(Tests::nameOfException([&] { (void)invocation->argumentAtIndex(index); }),
                  NS::kInvalidArgumentException);
    }
    EXPECT_EQ(Tests::reasonOfException([&] { invocation->setArgument_atIndex(nullptr, 4); }),
              "-[NSInvocation setArgument:atIndex:]: index (4) out of bounds [2, 4)");
    EXPECT_EQ(Tests::reasonOfException([&] { (void)invocationOf(kReset)->argumentAtIndex(2); }),
              "-[NSInvocation getArgument:atIndex:]: index (2) out of bounds [2, 2)");
}

TEST_F(InvocationTest, KeepsItsTargetAndArgumentsAlive) {
    const auto argument = str("argument");
    {
        const auto invocation = invocationOf(kMove);
        invocation->setArgument_atIndex(argument, 2);
        EXPECT_EQ(argument->referenceCount(), 2U);
        EXPECT_EQ(receiver->referenceCount(), 2U);
        invocation->invoke();
        EXPECT_EQ(argument->referenceCount(), 2U);
        invocation->setArgument_atIndex(nullptr, 2);
        EXPECT_EQ(argument->referenceCount(), 1U);
        invocation->setArgument_atIndex(argument, 3);
    }
    EXPECT_EQ(argument->referenceCount(), 1U);
    EXPECT_EQ(receiver->referenceCount(), 1U);
}

TEST_F(InvocationTest, CallsNobodyWithoutATarget) {
    const auto invocation = invocationOf(kReset);
    invocation->setTarget(nullptr);
    invocation->invoke();
    EXPECT_EQ(receiver->calls, Calls{});
    EXPECT_EQ(invocation->target(), nullptr);
}

TEST_F(InvocationTest, RaisesForAnArgumentOfAnotherClass) {
    const auto invocation = invocationOf(kMove);
    invocation->setArgument_atIndex(NS::Number::numberWithInt(1), 2);
    EXPECT_EQ(Tests::nameOfException([&] { invocation->invoke(); }), NS::kInvalidArgumentException);
    EXPECT_EQ(receiver->calls, Calls{});
}

TEST_F(InvocationTest, RaisesWhenTheTargetDoesNotRespond) {
    const auto invocation = invocationOf(kReset);
    const auto other = NS::make<NS::Object>();
    invocation->setTarget(other);
    EXPECT_EQ(Tests::nameOfException([&] { invocation->invoke(); }), NS::kInvalidArgumentException);
    EXPECT_EQ(Tests::reasonOfException([&] {
                  invocation->invoke();
              }).find("-[NSObject reset]: unrecognized selector sent to instance 0x"),
              0U);
}

TEST_F(InvocationTest, RaisesWhenTheSelectorTakesAnotherNumberOfArguments) {
    const auto invocation = invocationOf(kReset);
    invocation->setSelector(kMove);
    EXPECT_EQ(Tests::nameOfException([&] { invocation->invoke(); }), NS::kInvalidArgumentException);
    EXPECT_EQ(receiver->calls, Calls{});
}

TEST_F(InvocationTest, LetsTheCallMakeItAgain) {
    const auto invocation = invocationOf(kMove);
    invocation->setArgument_atIndex(str("outer"), 2);
    receiver->whenCalled = [&] {
        if (receiver->calls.size() == 1) {
            invocation->setArgument_atIndex(str("inner"), 2);
            invocation->invoke();
        }
    };
    invocation->invoke();
    EXPECT_EQ(receiver->calls, (Calls{"move outer to nil", "move inner to nil"}));
}

TEST_F(InvocationTest, KeepsTheTargetAndArgumentsOfARunningCall) {
    const auto invocation = invocationOf(kMove);
    NS::RefPtr<NS::String> argument = str("argument");
    NS::String* const observed = argument.get();
    invocation->setArgument_atIndex(std::move(argument), 2);
    std::uint32_t targetReferences = 0;
    receiver->whenCalled = [&] {
        invocation->setTarget(nullptr);
        invocation->setArgument_atIndex(nullptr, 2);
        targetReferences = receiver->referenceCount();
        EXPECT_EQ(observed->utf8(), "argument");
    };
    invocation->invoke();
    EXPECT_EQ(targetReferences, 2U);
    EXPECT_EQ(receiver->referenceCount(), 1U);
}

TEST_F(InvocationTest, PassesOnWhatTheOperationRaises) {
    receiver->whenCalled = [] {
        NS::Exception::raise("Custom", "from within");
    };
    EXPECT_EQ(Tests::reasonOfException([&] { invocationOf(kReset)->invoke(); }), "from within");
}

} // namespace
