#pragma once

#include "Platform/Foundation/Dictionary.h"
#include "Platform/Foundation/String.h"

#include <exception>
#include <memory>
#include <string_view>

namespace NS {

class Array;

// The platform's exception names.
inline constexpr std::string_view kInvalidArgumentException = "NSInvalidArgumentException";
inline constexpr std::string_view kRangeException = "NSRangeException";
inline constexpr std::string_view kGenericException = "NSGenericException";
inline constexpr std::string_view kUnknownKeyException = "NSUnknownKeyException";
inline constexpr std::string_view kInvalidArchiveOperationException =
    "NSInvalidArchiveOperationException";
inline constexpr std::string_view kInvalidUnarchiveOperationException =
    "NSInvalidUnarchiveOperationException";

// A programmer's mistake, or bad input where the platform raises for it. Carries its name, its
// reason and the call stack of the point where it was raised. Copies share one state; copying never
// fails.
class Exception : public std::exception {
  public:
    // Takes the call stack of the caller; to be thrown right there.
    Exception(Ref<String> name, RefPtr<String> reason, RefPtr<Dictionary> userInfo = nullptr);

    // The same, thrown at once.
    [[noreturn]] static void raise(std::string_view name, std::string_view reason);
    [[noreturn]] static void raise(std::string_view name, const Ref<String>& reason);

    const Ref<String>& name() const noexcept;
    const RefPtr<String>& reason() const noexcept;
    const RefPtr<Dictionary>& userInfo() const noexcept;

    // The return addresses, innermost first, as numbers; at most 128.
    Ref<Array> callStackReturnAddresses() const;
    // A line for each of them: index, module, address, function and offset into it. A function that
    // its module does not export has no name here, and the offset is that into the module.
    Ref<Array> callStackSymbols() const;

    // "name: reason", for callers that know the standard library only.
    const char* what() const noexcept override;

  private:
    struct State;

    Exception(Ref<String> name, RefPtr<String> reason, RefPtr<Dictionary> userInfo,
              const void* returnAddress);

    std::shared_ptr<const State> state_;
};

using UncaughtExceptionHandler = void (*)(const Exception& exception);

// Sets what is called with an exception that nothing catches, before the process is aborted; null
// for nothing. Replaces the earlier handler. An exception of another kind reaches it with its
// what() as the reason. Runs once, on the thread that raised first; others wait for the end. The
// process ends by SIGABRT when it returns, and when it raises.
void setUncaughtExceptionHandler(UncaughtExceptionHandler handler) noexcept;

} // namespace NS
