#include "Platform/Foundation/Invocation.h"

#include "Platform/Foundation/Exception.h"
#include "Platform/Foundation/Format.h"

#include <algorithm>
#include <array>
#include <span>

namespace NS {

constinit const Class MethodSignature::kClass{.name = "NSMethodSignature",
                                              .superclass = &Object::kClass};
constinit const Class Invocation::kClass{.name = "NSInvocation", .superclass = &Object::kClass};

namespace {

// So many arguments are copied for a call without asking the heap.
constexpr std::size_t kFew = 4;

} // namespace

RefPtr<MethodSignature> MethodSignature::signatureForSelector(const Object& target,
                                                              Selector selector) {
    if (target.methodForSelector(selector) == nullptr) {
        return nullptr;
    }
    return make<MethodSignature>(selector.argumentCount());
}

Invocation::Invocation(const RefPtr<MethodSignature>& signature) {
    if (!signature) {
        Exception::raise(
            kInvalidArgumentException,
            "+[NSInvocation invocationWithMethodSignature:]: method signature argument "
            "cannot be nil");
    }
    arguments_.resize(signature->numberOfArguments() - MethodSignature::kFirstParameter);
}

std::size_t Invocation::checkedIndex(const char* operation, std::size_t index) const {
    const std::size_t first = MethodSignature::kFirstParameter;
    if (index < first || index >= first + arguments_.size()) {
        Exception::raise(
            kInvalidArgumentException,
            stringWithFormat("-[NSInvocation %s]: index (%zu) out of bounds [%zu, %zu)", operation,
                             index, first, first + arguments_.size()));
    }
    return index - first;
}

void Invocation::setArgument_atIndex(RefPtr<Object> argument, std::size_t index) {
    arguments_[checkedIndex("setArgument:atIndex:", index)] = std::move(argument);
}

RefPtr<Object> Invocation::argumentAtIndex(std::size_t index) const {
    return arguments_[checkedIndex("getArgument:atIndex:", index)];
}

void Invocation::invoke() {
    // The call may set the target or the arguments of this very invocation anew.
    const RefPtr<Object> target = target_;
    if (!target) {
        return;
    }
    const Method* const operation = target->methodForSelector(selector_);
    if (operation == nullptr || selector_.argumentCount() != arguments_.size()) {
        raiseUnrecognizedSelector(*target, selector_);
    }
    if (arguments_.size() <= kFew) {
        std::array<RefPtr<Object>, kFew> few;
        std::ranges::copy(arguments_, few.begin());
        operation->invoke(*target, std::span(few).first(arguments_.size()));
    } else {
        const std::vector<RefPtr<Object>> many = arguments_;
        operation->invoke(*target, many);
    }
}

} // namespace NS
