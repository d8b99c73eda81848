#pragma once

#include "Shell/linux/BusConnection.h"

#include <deque>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace Tests {

// The place that a menu is asked for.
struct PlaceArguments {
    std::vector<std::string> selection; // URLs
    std::string target;
};

// A program on the session bus that asks the extension, served by the run loop of the test.
//
// Answers are text: strings quoted, arrays in brackets, structures in parentheses, bytes as they
// are with each NUL as "|"; or "error ", the error's name, a colon and what it says.
class BusPeer final : public Shell::BusConnection::Delegate {
  public:
    using Append = std::function<void(sd_bus_message*)>;

    // Throws when there is no bus.
    BusPeer();
    ~BusPeer();
    BusPeer(const BusPeer&) = delete;
    BusPeer& operator=(const BusPeer&) = delete;

    // Calls the extension and runs the loop until it has answered.
    std::string call(const char* member, const Append& append = {});
    std::string menu(std::uint64_t kind, const PlaceArguments& place);
    std::string run(std::uint64_t kind, const std::string& action, const PlaceArguments& place,
                    std::uint64_t deadline = 0);
    // The same in bytes: the selection's paths with their NULs, and the target's.
    std::string menuOfPaths(std::uint64_t kind, std::string_view selection,
                            std::string_view target);
    std::string menuOfPlace(std::string_view bytes);
    std::string runOnPaths(const std::string& action, std::string_view selection,
                           std::string_view target, std::uint64_t deadline = 0);
    std::string beginObserving(const std::string& folder, bool untilCallerGoes);
    std::string endObserving(const std::string& folder);
    std::string property(const char* name);
    std::string introspection();
    // Sends the call and leaves the answer to onAnswer, or to nobody.
    void send(const char* member, const Append& append, std::function<void(std::string)> onAnswer);

    // Notes the names and values of changed properties from now on: "Generation=2".
    void followProperties();
    std::vector<std::string> changes;

    // Asks the bus itself, without turning the loop.
    bool nameHasOwner(const char* name);
    bool hasName(const char* name);
    void takeName(const char* name);
    void releaseName(const char* name);

    void busWillServe() override {}
    void busServed() override {}
    void busLost() override { isLost = true; }
    bool isLost = false;

  private:
    sd_bus_message* newCall(const char* interface, const char* member);
    std::string answerTo(sd_bus_message* call);
    void send(sd_bus_message* call, std::function<void(std::string)> onAnswer);

    std::deque<std::function<void(std::string)>> onAnswer_; // where the library finds them
    NS::Ref<Shell::BusConnection> connection_ = NS::make<Shell::BusConnection>(*this);
};

} // namespace Tests
