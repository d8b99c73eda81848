#pragma once

#include "Platform/Foundation/Description.h"
#include "Platform/Foundation/Exception.h"

#include <optional>
#include <string>

// What an action raises, as a value that a test can compare.
namespace Tests {

// The exception that the action raises, or nothing.
template <class Action>
std::optional<NS::Exception> raisedException(Action&& act) {
    try {
        act();
    } catch (const NS::Exception& exception) {
        return exception;
    }
    return std::nullopt;
}

// The name of the exception that the action raises; "none" when it raises nothing.
template <class Action>
std::string nameOfException(Action&& act) {
    const auto exception = raisedException(act);
    return exception ? exception->name()->utf8() : "none";
}

// The reason of the exception that the action raises; "none" when it raises nothing.
template <class Action>
std::string reasonOfException(Action&& act) {
    const auto exception = raisedException(act);
    return exception ? NS::descriptionOf(exception->reason().get())->utf8() : "none";
}

} // namespace Tests
