#pragma once

#include "Platform/Finder/FinderSync.h"
#include "Shell/CallArguments.h"
#include "Shell/MenuRequest.h"
#include "Shell/ObservedFolders.h"
#include "Shell/PublishedState.h"

#include <systemd/sd-bus.h>

#include <cstdint>
#include <exception>
#include <optional>
#include <utility>

namespace Shell {

// The extension as an object on the bus: turns calls into calls of the extension, and properties
// into what it publishes. Main thread.
//
// Calls come through a library in C, which no exception may cross. What the extension raises goes
// to the caller as an error and is kept for the one who serves the bus to raise again.
class FinderBusObject {
  public:
    FinderBusObject(NS::Ref<FI::FinderSync> extension, MenuState state, Host host);

    // Puts the object on a bus, and watches for callers that leave it; both last as long as the
    // bus. Zero or more, or the negative number of the system's error.
    int exportOn(sd_bus* bus);
    // Looks whether anything published has changed.
    void refresh() { state_.refresh(); }
    // When to look also if nothing happens.
    std::optional<HostAnswers::Clock::time_point> nextLook() const noexcept {
        return state_.nextLook();
    }
    // Tells the bus what has changed since it was told last.
    void publishChanges(sd_bus* bus);
    // No caller is there any more.
    void callersGone() { folders_.allCallersGone(); }

    // Whether a call raised; until then is taken, further calls are refused.
    bool hasRaised() const noexcept { return raised_ != nullptr; }
    std::exception_ptr takeRaised() noexcept { return std::exchange(raised_, nullptr); }
    // Whether a call since this was asked last had so large a selection that its memory is worth
    // giving back.
    bool takeWasLarge() noexcept { return std::exchange(wasLarge_, false); }

  private:
    struct Callbacks;
    using Handler = int (FinderBusObject::*)(sd_bus_message*, sd_bus_error*);

    int menu(sd_bus_message* call, sd_bus_error* error);
    int menuOfPaths(sd_bus_message* call, sd_bus_error* error);
    int run(sd_bus_message* call, sd_bus_error* error);
    int runOnPaths(sd_bus_message* call, sd_bus_error* error);
    int beginObserving(sd_bus_message* call, sd_bus_error* error);
    int endObserving(sd_bus_message* call, sd_bus_error* error);
    int requestBadge(sd_bus_message* call, sd_bus_error* error);
    int nameLost(sd_bus_message* signal, sd_bus_error* error);

    int guarded(Handler handler, sd_bus_message* message, sd_bus_error* error);
    using AppendMenu = int (*)(sd_bus_message* reply, const NS::RefPtr<NS::Menu>& menu);
    int answerMenu(sd_bus_message* call, const MenuRequest& request, AppendMenu append);
    int runEntry(sd_bus_message* call, sd_bus_error* error, const MenuRequest& request,
                 const char* action, std::uint64_t deadline);
    void noteSize(const MenuRequest& request);
    void noteKind(FI::MenuKind kind);
    int keepRaised(sd_bus_error* error, const char* what);

    NS::Ref<FI::FinderSync> extension_;
    PublishedState state_;
    ObservedFolders folders_;
    std::exception_ptr raised_;
    bool wasLarge_ = false;
};

} // namespace Shell
