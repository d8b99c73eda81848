#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace Benchmarks {

// Calls over the session bus that do nothing but carry their argument and an answer as long as a
// menu's, made and served by the bus library in the plainest way.
class RawBusCall {
  public:
    // The name on the bus, of the one who serves and of his interface.
    static constexpr const char* kName = "com.Quorvane.Benchmarks";

    // Serves the calls as a Peer until the process is killed. Throws when there is no bus.
    [[noreturn]] static void serve();

    // Connects. Throws when there is no bus.
    RawBusCall();
    ~RawBusCall();
    RawBusCall(const RawBusCall&) = delete;
    RawBusCall& operator=(const RawBusCall&) = delete;

    // Each waits for the answer and tells whether there was one. Bytes are handed over in one
    // piece, and nobody looks at them; of texts each is checked by the library and read.
    bool carryBytes(std::string_view bytes);
    bool carryTexts(const std::vector<std::string>& texts);

  private:
    class Connection;
    std::unique_ptr<Connection> connection_;
};

} // namespace Benchmarks
