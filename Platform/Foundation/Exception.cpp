#include "Platform/Foundation/Exception.h"

#include "Platform/Foundation/Array.h"
#include "Platform/Foundation/CallStack.h"
#include "Platform/Foundation/Dictionary.h"
#include "Platform/Foundation/Number.h"

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <typeinfo>

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

[[noreturn]] void terminate() {
    // A handler that raises again ends here a second time and must not be called again.
    const UncaughtExceptionHandler handler = uncaughtExceptionHandler.exchange(nullptr);
    if (std::current_exception() != nullptr) {
        const Exception exception = currentException();
        if (handler != nullptr) {
            handler(exception);
        }
        (void)std::fprintf(stderr,
                           "*** Terminating app due to uncaught exception '%s', reason: '%s'\n",
                           exception.name()->utf8().c_str(),
                           exception.reason() ? exception.reason()->utf8().c_str() : "(null)");
    }
    std::abort();
}

} // namespace

Exception::Exception(Ref<String> name, RefPtr<String> reason, RefPtr<Dictionary> userInfo)
    : name_(std::move(name)), reason_(std::move(reason)), userInfo_(std::move(userInfo)),
      callStack_(CallStack::capture(1)),
      what_(name_->utf8() + ": " + (reason_ ? reason_->utf8() : "(null)")) {}

void Exception::raise(std::string_view name, std::string_view reason) {
    throw Exception(str(name), String::fromFileSystemRepresentation(reason));
}

void Exception::raise(std::string_view name, const Ref<String>& reason) {
    throw Exception(str(name), reason);
}

Ref<Array> Exception::callStackReturnAddresses() const {
    const auto addresses = make<MutableArray>();
    for (void* address : callStack_) {
        addresses->addObject(
            Number::numberWithUnsignedLongLong(reinterpret_cast<std::uintptr_t>(address)));
    }
    return addresses;
}

Ref<Array> Exception::callStackSymbols() const {
    const auto symbols = make<MutableArray>();
    for (std::size_t i = 0; i < callStack_.size(); ++i) {
        symbols->addObject(
            String::fromFileSystemRepresentation(CallStack::symbol(i, callStack_[i])));
    }
    return symbols;
}

void setUncaughtExceptionHandler(UncaughtExceptionHandler handler) noexcept {
    uncaughtExceptionHandler.store(handler);
    std::set_terminate(&terminate);
}

} // namespace NS
