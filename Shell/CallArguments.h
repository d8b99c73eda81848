#pragma once

#include "Platform/Foundation/Array.h"
#include "Platform/Foundation/URL.h"

#include <systemd/sd-bus.h>

#include <cstdint>
#include <string>

namespace Shell {

// Reads the arguments of a call on the bus, in their order. Their types have been checked against
// the interface. After the first that is wrong, error() says so, and the values mean nothing.
class CallArguments {
  public:
    explicit CallArguments(sd_bus_message* call) noexcept : call_(call) {}

    std::uint64_t number();
    bool flag();
    // Valid for as long as the call.
    const char* text();
    // The URL of a folder or an item; a call without one is wrong.
    NS::RefPtr<NS::URL> fileURL();
    // The same, where the empty text is none.
    NS::RefPtr<NS::URL> fileURLOrNone();
    NS::Ref<NS::Array> fileURLs();

    // What is wrong, for the caller; empty when nothing is.
    const std::string& error() const noexcept { return error_; }

  private:
    template <char type, class Value>
    Value basic(Value value);
    void fail(std::string error);

    sd_bus_message* call_;
    std::string error_;
};

} // namespace Shell
