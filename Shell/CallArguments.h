#pragma once

#include "Platform/Finder/Selection.h"
#include "Platform/Foundation/URL.h"

#include <systemd/sd-bus.h>

#include <cstdint>
#include <string>
#include <string_view>

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
    // What is selected, in the form that the call has it in: texts, which are file URLs, or bytes,
    // which are paths with a NUL behind each. The latter stay in the message, which is kept as long
    // as the selection. Nil only when it is wrong.
    NS::RefPtr<FI::Selection> selection();
    // What is targeted, in the form that the call has it in: a text, which is a file URL, or the
    // bytes of a path; empty is none.
    NS::RefPtr<NS::URL> target();

    // What is wrong, for the caller; empty when nothing is.
    const std::string& error() const noexcept { return error_; }

  private:
    template <char type, class Value>
    Value basic(Value value);
    // The bytes, valid for as long as the call.
    std::string_view bytes();
    bool nextIsBytes();
    NS::RefPtr<FI::Selection> fileURLs();
    NS::RefPtr<FI::Selection> paths();
    NS::RefPtr<NS::URL> fileURLOrNone();
    NS::RefPtr<NS::URL> pathOrNone();
    void fail(std::string error);

    sd_bus_message* call_;
    std::string error_;
};

} // namespace Shell
