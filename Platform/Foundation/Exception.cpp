#include "Platform/Foundation/Exception.h"

#include "Platform/Foundation/Array.h"
#include "Platform/Foundation/CallStack.h"
#include "Platform/Foundation/Description.h"
#include "Platform/Foundation/Number.h"
#include "Platform/Foundation/ProcessInfo.h"

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <mutex>
#include <string>
#include <typeinfo>
#include <utility>
#include <vector>

namespace NS {

namespace {

std::atomic<UncaughtExceptionHandler> uncaughtExceptionHandler{nullptr};

constinit UncaughtExceptionRecord theRecord{};
std::atomic<bool> recorded{false};
static_assert(std::atomic<bool>::is_always_lock_free, "a signal handler reads it");

// What is too long is cut off between two characters.
template <std::size_t size>
void put(std::array<char, size>& place, std::string_view text) noexcept {
    std::size_t length = std::min(text.size(), size - 1);
    while (length > 0 && length < text.size() && (text[length] & 0xC0) == 0x80) {
        --length;
    }
    place[text.copy(place.data(), length)] = '\0';
}

// The process ends once, so that this happens once.
void record(std::string_view name, std::string_view reason,
            std::span<void* const> returnAddresses) noexcept {
    put(theRecord.name, name);
    put(theRecord.reason, reason);
    theRecord.depth = std::min(returnAddresses.size(), theRecord.returnAddresses.size());
    std::copy_n(returnAddresses.begin(), theRecord.depth, theRecord.returnAddresses.begin());
    theRecord.thread = currentThreadIdentifier();
    recorded.store(true, std::memory_order_release);
}

// The exception being handled, in the platform's form, which is recorded. No frame has been unwound
// yet when nothing catches, so that a call stack taken now still shows where a foreign exception
// was thrown.
Exception currentException() {
    try {
        throw;
    } catch (const Exception& exception) {
        record(exception.name()->utf8(), descriptionOf(exception.reason().get())->utf8(),
               exception.returnAddresses());
        return exception;
    } catch (const std::exception& exception) {
        Exception own(str(kGenericException),
                      String::fromFileSystemRepresentation(exception.what()));
        record(CallStack::readableName(typeid(exception).name()), own.reason()->utf8(), {});
        return own;
    } catch (...) {
        Exception own(str(kGenericException), str("exception of an unknown type"));
        record(own.name()->utf8(), own.reason()->utf8(), {});
        return own;
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

std::span<void* const> Exception::returnAddresses() const noexcept {
    return state_->callStack;
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
    for (const std::string& line : CallStack::symbols(state_->callStack)) {
        symbols.emplace_back(String::fromFileSystemRepresentation(line));
    }
    return make<Array>(std::move(symbols));
}

void setUncaughtExceptionHandler(UncaughtExceptionHandler handler) noexcept {
    uncaughtExceptionHandler.store(handler);
    handleUncaughtExceptions();
}

void handleUncaughtExceptions() noexcept {
    std::set_terminate(&terminate);
}

const UncaughtExceptionRecord* uncaughtExceptionRecord() noexcept {
    return recorded.load(std::memory_order_acquire) ? &theRecord : nullptr;
}

} // namespace NS
