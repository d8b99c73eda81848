#pragma once

#include "Platform/Ports/PortMessage.h"

#include <nlohmann/json.hpp>
#include <ostream>
#include <string_view>

// What the reference host received, one JSON line a request:
//
//     {"action":"ext_share","payload":["/Docs/a.txt"],"client":"<NSMachPort: 0x…>"}
//
// The payload has one element for each component, the client is null where a request came without a
// port to answer to. A component that is no archive is {"$undecodable": reason}. What became of it
// follows, a line for each item:
//
//     {"done":"ext_movetotrash","path":"/a.txt","to":"/Trash/a.txt"}
//     {"refused":"ext_share","path":null,"reason":"no path was sent"}
class Journal {
  public:
    // Writes to a stream that outlives it.
    explicit Journal(std::ostream& out) : out_(out) {}

    // Notes a message whose action the link knows; others are not requests. Flushed.
    void note(const NS::PortMessage& message);
    // Notes what was done about an item, or why nothing was; not flushed. The members tell more.
    void noteDone(std::string_view action, const nlohmann::ordered_json& path,
                  const nlohmann::ordered_json& members);
    void noteRefused(std::string_view action, const nlohmann::ordered_json& path,
                     std::string_view reason);
    // Notes that a client has ended, with the folders that it showed; not flushed.
    void noteGone(std::string_view client, const nlohmann::ordered_json& observed);
    void flush() { out_.flush(); }

  private:
    void write(const nlohmann::ordered_json& line);

    std::ostream& out_;
};
