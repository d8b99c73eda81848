#pragma once

#include "Shell/Client/ClientConnection.h"
#include "Shell/Client/FinderClient.h"
#include "Shell/Client/FollowedExtension.h"
#include "Shell/Client/Offer.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace Shell {

// A call of the extension and its answer. Gone, it takes no answer any more.
class Question {
  public:
    // A call of one of its methods, to the one that is there now. Both outlive the question.
    Question(ClientConnection& connection, const FollowedExtension& extension, const char* method);
    ~Question();
    Question(const Question&) = delete;
    Question& operator=(const Question&) = delete;

    // The arguments, in their order. What does not fit a message, or is no text, ask() tells.
    void append(std::uint64_t number);
    void append(std::string_view text);
    void append(MenuKind kind, const OfferedPlace& place);

    // Sends it and waits for the answer: not longer than until the deadline, nor when the extension
    // goes.
    Outcome ask(ClientConnection::Clock::time_point deadline);
    // The menu that a kDone answer holds; nothing when it is no menu.
    std::optional<Menu> menu() const;
    // What went wrong, as the bus or the extension says it.
    const std::string& error() const noexcept { return error_; }

  private:
    void check(int result);
    char* spaceFor(std::size_t bytes);
    bool isAsking() const noexcept { return extension_.owner() == owner_; }
    Outcome unanswered() const noexcept;
    Outcome failed();

    ClientConnection& connection_;
    const FollowedExtension& extension_;
    const std::string owner_;
    BusMessage call_;
    BusMessage reply_;
    int failure_ = 0; // the first error of building or sending it, negative
    std::string error_;
};

// What an answer comes to.
Outcome outcomeOf(sd_bus_message* reply);

} // namespace Shell
