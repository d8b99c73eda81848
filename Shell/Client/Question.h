#pragma once

#include "Shell/Client/ClientConnection.h"
#include "Shell/Client/FinderClient.h"

#include <optional>
#include <string>
#include <vector>

namespace Shell {

// What a place is to the extension: its items and its target as file URLs.
struct PlaceURLs {
    std::vector<std::string> items;
    std::string target; // empty for none
};

// A call of the extension and its answer. Gone, it takes no answer any more.
class Question {
  public:
    // A call of one of its methods. The connection outlives the question.
    Question(ClientConnection& connection, const std::string& owner, const char* method);
    ~Question();
    Question(const Question&) = delete;
    Question& operator=(const Question&) = delete;

    void append(std::uint64_t number);
    void append(const std::string& text);
    void append(const std::vector<std::string>& texts);

    // Sends it and waits for the answer until the deadline. Nothing when none came in time.
    std::optional<Outcome> ask(ClientConnection::Clock::time_point deadline);
    // The menu that a kDone answer holds; nothing when it is no menu.
    std::optional<Menu> menu() const;
    // What the answer says went wrong.
    const std::string& error() const noexcept { return error_; }

  private:
    static int answered(sd_bus_message* reply, void* object, sd_bus_error*) noexcept;
    void check(int result);

    ClientConnection& connection_;
    BusMessage call_;
    BusMessage reply_;
    BusSlot slot_;
    int failure_ = 0; // the first error of building it, negative
    std::string error_;
};

// What an answer that is an error comes to.
Outcome outcomeOf(sd_bus_message* reply);

} // namespace Shell
