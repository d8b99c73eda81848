#pragma once

#include "Platform/Foundation/Dictionary.h"
#include "Platform/Foundation/String.h"

#include <exception>
#include <string_view>
#include <vector>

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
// reason and the call stack of the point where it was raised. Cheap to copy: copies share one
// state.
class Exception : public std::exception {
  public:
    Exception(Ref<String> name, RefPtr<String> reason, RefPtr<Dictionary> userInfo = nullptr);

    // Throws an exception with the call stack of the caller.
    [[noreturn]] static void raise(std::string_view name, std::string_view reason);
    [[noreturn]] static void raise(std::string_view name, const Ref<String>& reason);

    Ref<String> name() const { return name_; }
    RefPtr<String> reason() const { return reason_; }
    RefPtr<Dictionary> userInfo() const { return userInfo_; }

    // The return addresses, innermost first, as numbers.
    Ref<Array> callStackReturnAddresses() const;
    // A line for each of them: index, module, address, function and offset into it.
    Ref<Array> callStackSymbols() const;

    // "name: reason", for callers that know the standard library only.
    const char* what() const noexcept override { return what_.c_str(); }

  private:
    Ref<String> name_;
    RefPtr<String> reason_;
    RefPtr<Dictionary> userInfo_;
    std::vector<void*> callStack_;
    std::string what_;
};

using UncaughtExceptionHandler = void (*)(const Exception& exception);

// Sets what is called with an exception that nothing catches, before the process is aborted; null
// for nothing. Replaces the earlier handler. An exception of another kind reaches it with its
// what() as the reason. Runs on the thread that raised; the process then ends by SIGABRT, whatever
// it does.
void setUncaughtExceptionHandler(UncaughtExceptionHandler handler) noexcept;

} // namespace NS
