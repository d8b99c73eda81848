#pragma once

#include "Platform/Foundation/Dictionary.h"
#include "Platform/Foundation/String.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <exception>
#include <memory>
#include <span>
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
    // The same as they are, valid as long as the exception.
    std::span<void* const> returnAddresses() const noexcept;
    // A line for each of them: index, module, address, function and offset into it. A function
    // whose name is not at hand, as in a program without its symbol table, has none here, and the
    // offset is that into the module.
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

// Has exceptions that nothing catches end the process in that way from now on, with the handler set
// so far or set later, or without one.
void handleUncaughtExceptions() noexcept;

// What is left of the exception that ends this process, in fixed storage, for whoever reports the
// end from a signal handler.
struct UncaughtExceptionRecord {
    // UTF-8, ended by a zero byte; what is longer is cut off. The name of an exception of another
    // kind is that of its type.
    std::array<char, 256> name;
    std::array<char, 4096> reason;
    // The call stack of the point of raising; empty where the exception is of another kind, whose
    // stack is still that of its thread.
    std::array<void*, 128> returnAddresses;
    std::size_t depth;
    std::int32_t thread;
};

// Null as long as no exception ends this process. Safe in a signal handler.
const UncaughtExceptionRecord* uncaughtExceptionRecord() noexcept;

} // namespace NS
