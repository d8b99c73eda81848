#include "Platform/Foundation/Exception.h"

#include "Platform/Foundation/Array.h"
#include "Platform/Foundation/CallStack.h"
#include "Platform/Foundation/Description.h"
#include "Platform/Foundation/Number.h"

#include <atomic>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

namespace NS {

namespace {

std::atomic<UncaughtExceptionHandler> uncaughtExceptionHandler{nullptr};

// The exception being handled, in the platform's form. No frame has been unwound yet when nothing
// catches, so that a call stack taken now still shows where a foreign exception was thrown.
Exception currentException() {
    try {
        throw;
    } catch (const Exception& exception) {
        return exception;
    } catch (const std::exception& exception) {
        return Exception(str(kGenericException),
                         String::fromFileSystemRepresentation(exception.what()));
    } catch (...) {
        return Exception(str(kGenericException), str("exception of an unknown type"));
    }
}

void callHandler(const Exception& exception) noexcept {
    const UncaughtExceptionHandler handler = uncaughtExceptionHandler;
    try {
        if (handler != nullptr) {
            handler(exception);
        }
    } catch (...) {
        (void)std::fputs("*** The handler of uncaught exceptions raised one itself\n", stderr);
    }
}

// The process ends once: a second thread that comes here waits for it.
constinit std::mutex endOfProcess;
// What this thread does at the end can fail in turn.
constinit thread_local bool endsHere = false;

[[noreturn]] void terminate() noexcept {
    if (std::exchange(endsHere, true)) {
        std::abort();
    }
    endOfProcess.lock();
    if (std::current_exception() != nullptr) {
        const Exception exception = currentException();
        callHandler(exception);
        (void)std::fprintf(stderr, "*** Terminating due to uncaught exception %s\n",
                           exception.what());
    } else {
        (void)std::fputs("*** Terminating without an exception\n", stderr);
    }
    std::abort();
}

} // namespace

struct Exception::State {
    Ref<String> name;
    RefPtr<String> reason;
    RefPtr<Dictionary> userInfo;
    std::vector<void*> callStack;
    std::string what;
};

// Functions whose return address is where the call stack begins are not inlined.
[[gnu::noinline]] Exception::Exception(Ref<String> name, RefPtr<String> reason,
                                       RefPtr<Dictionary> userInfo)
    : Exception(std::move(name), std::move(reason), std::move(userInfo),
                __builtin_return_address(0)) {}

Exception::Exception(Ref<String> name, RefPtr<String> reason, RefPtr<Dictionary> userInfo,
                     const void* returnAddress) {
    std::string what = name->utf8() + ": " + descriptionOf(reason.get())->utf8();
    state_ = std::make_shared<const State>(
        State{std::move(name), std::move(reason), std::move(userInfo),
              CallStack::captureFrom(returnAddress), std::move(what)});
}

const Ref<String>& Exception::name() const noexcept {
    return state_->name;
}

const RefPtr<String>& Exception::reason() const noexcept {
    return state_->reason;
}

const RefPtr<Dictionary>& Exception::userInfo() const noexcept {
    return state_->userInfo;
}

const char* Exception::what() const noexcept {
    return state_->what.c_str();
}

[[gnu::noinline]] void Exception::raise(std::string_view name, std::string_view reason) {
    throw Exception(str(name), String::fromFileSystemRepresentation(reason), nullptr,
                    __builtin_return_address(0));
}

[[gnu::noinline]] void Exception::raise(std::string_view name, const Ref<String>& reason) {
    throw Exception(str(name), reason, nullptr, __builtin_return_address(0));
}

Ref<Array> Exception::callStackReturnAddresses() const {
    std::vector<Ref<Object>> addresses;
    for (void* address : state_->callStack) {
        addresses.emplace_back(
            Number::numberWithUnsignedLongLong(reinterpret_cast<std::uintptr_t>(address)));
    }
    return make<Array>(std::move(addresses));
}

Ref<Array> Exception::callStackSymbols() const {
    std::vector<Ref<Object>> symbols;
    for (void* address : state_->callStack) {
        symbols.emplace_back(
            String::fromFileSystemRepresentation(CallStack::symbol(symbols.size(), address)));
    }
    return make<Array>(std::move(symbols));
}

void setUncaughtExceptionHandler(UncaughtExceptionHandler handler) noexcept {
    uncaughtExceptionHandler.store(handler);
    std::set_terminate(&terminate);
}

} // namespace NS
