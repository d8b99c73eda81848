#pragma once

#include <cstddef>
#include <cstdint>
#include <ostream>
#include <string_view>
#include <vector>

namespace Inspection {

// Writes one JSON value while it is walked through, indented, so that no copy of a large one is
// kept. The caller keeps the order: key and value in turns within an object, one value at the top.
class JsonOutput {
  public:
    // Raises Error as soon as the value comes to more bytes than the limit.
    JsonOutput(std::ostream& out, std::uint64_t limit) noexcept : out_(out), limit_(limit) {}

    void beginObject() { begin('{'); }
    void endObject() { end('}'); }
    void beginArray() { begin('['); }
    void endArray() { end(']'); }
    // Valid UTF-8.
    void key(std::string_view utf8);
    void text(std::string_view utf8);
    // A number, true, false or null as JSON spells it.
    void literal(std::string_view json);
    // An object of one member, on one line.
    void textForm(std::string_view key, std::string_view utf8);
    void literalForm(std::string_view key, std::string_view json);

    // Ends the last line.
    void finish() { put("\n"); }

  private:
    void begin(char bracket);
    void end(char bracket);
    void beginValue();
    void newLine();
    void put(std::string_view bytes);
    void putText(std::string_view utf8);

    std::ostream& out_;
    std::uint64_t limit_;
    std::uint64_t written_ = 0;
    std::vector<bool> hasMembers_; // of each open object or array
    bool followsKey_ = false;      // the next value stands on its key's line
};

} // namespace Inspection
