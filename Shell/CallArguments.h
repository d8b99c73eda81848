#pragma once

#include "Platform/Finder/Selection.h"
#include "Platform/Foundation/URL.h"
#include "Shell/MenuRequest.h"

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
    // What is selected: an array of texts, each a file URL. Nil only when it is wrong.
    NS::RefPtr<FI::Selection> fileURLs();
    // What is targeted: a text, which is a file URL or, for none, empty.
    NS::RefPtr<NS::URL> fileURLOrNone();
    // All of it in bytes, as Docs/finder-bus.md describes them. The paths of the selection stay in
    // the message, which is kept as long as the selection.
    MenuRequest place();

    // What is wrong, for the caller; empty when nothing is.
    const std::string& error() const noexcept { return error_; }

  private:
    template <char type, class Value>
    Value basic(Value value);
    // The bytes, valid for as long as the call.
    std::string_view bytes();
    NS::RefPtr<FI::Selection> selectionOf(std::string_view paths);
    NS::RefPtr<NS::URL> targetOf(std::string_view path);
    void fail(std::string error);

    sd_bus_message* call_;
    std::string error_;
};

} // namespace Shell
