#pragma once

#include "Platform/Ports/PortMessage.h"

#include <ostream>

// What the reference host received, one JSON line a request:
//
//     {"action":"ext_share","payload":["/Docs/a.txt"],"client":"<NSMachPort: 0x…>"}
//
// The payload has one element for each component, the client is null where a request came without a
// port to answer to. A component that is no archive is {"$undecodable": reason}. Each line is
// flushed.
class Journal {
  public:
    // Writes to a stream that outlives it.
    explicit Journal(std::ostream& out) : out_(out) {}

    // Notes a message whose action the link knows; others are not requests.
    void note(const NS::PortMessage& message);

  private:
    std::ostream& out_;
};
