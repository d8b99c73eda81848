#include "Shell/FinderBusObject.h"

#include "Platform/Foundation/Log.h"
#include "Shell/EncodedMenu.h"
#include "Shell/FinderInterface.h"

#include <cerrno>
#include <chrono>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace Shell {

namespace {

struct MessageUnref {
    void operator()(sd_bus_message* message) const noexcept { sd_bus_message_unref(message); }
};
using Message = std::unique_ptr<sd_bus_message, MessageUnref>;

// What a handler returns when it has answered; zero would have the library look for another one.
constexpr int kAnswered = 1;

// Items; smaller ones are not worth the time.
constexpr std::size_t kLargeSelection = 32'768;

int refuse(sd_bus_error* error, const char* name, const char* text) {
    return sd_bus_error_set(error, name, text);
}

int refuseArguments(sd_bus_error* error, const CallArguments& arguments) {
    return refuse(error, FinderInterface::kErrorInvalidArgs, arguments.error().c_str());
}

int answer(sd_bus_message* call) {
    const int result = sd_bus_reply_method_return(call, nullptr);
    return result < 0 ? result : kAnswered;
}

// A moment on the system's monotonic clock, in microseconds; 0 for none.
bool isPast(std::uint64_t deadline) {
    const auto now = std::chrono::steady_clock::now().time_since_epoch();
    const auto elapsed = std::chrono::duration_cast<std::chrono::microseconds>(now).count();
    return deadline != 0 && static_cast<std::uint64_t>(elapsed) > deadline;
}

int appendEntries(sd_bus_message* reply, const NS::Menu& menu) {
    for (const NS::Ref<NS::MenuItem>& entry : menu.itemArray()) {
        const int result =
            sd_bus_message_append(reply, "(ssb)", entry->title()->utf8().c_str(),
                                  std::string(entry->action().name).c_str(), entry->isEnabled());
        if (result < 0) {
            return result;
        }
    }
    return 0;
}

int appendMenu(sd_bus_message* reply, const NS::RefPtr<NS::Menu>& menu) {
    int result = sd_bus_message_append(reply, "s", menu ? menu->title()->utf8().c_str() : "");
    if (result >= 0) {
        result = sd_bus_message_open_container(reply, SD_BUS_TYPE_ARRAY, "(ssb)");
    }
    if (result >= 0 && menu) {
        result = appendEntries(reply, *menu);
    }
    return result < 0 ? result : sd_bus_message_close_container(reply);
}

int appendMenuInBytes(sd_bus_message* reply, const NS::RefPtr<NS::Menu>& menu) {
    const std::string bytes = encodedMenu(menu);
    return sd_bus_message_append_array(reply, SD_BUS_TYPE_BYTE, bytes.data(), bytes.size());
}

std::string senderOf(sd_bus_message* call) {
    const char* const sender = sd_bus_message_get_sender(call);
    return sender == nullptr ? "" : sender;
}

} // namespace

FinderBusObject::FinderBusObject(NS::Ref<FI::FinderSync> extension, MenuState state, Host host)
    : extension_(extension), state_(extension, std::move(state), std::move(host)),
      folders_(extension) {}

int FinderBusObject::menu(sd_bus_message* call, sd_bus_error* error) {
    CallArguments arguments(call);
    MenuRequest request;
    request.kind = FI::MenuKind{arguments.number()};
    request.selection = arguments.fileURLs();
    request.target = arguments.fileURLOrNone();
    noteSize(request);
    if (!arguments.error().empty()) {
        return refuseArguments(error, arguments);
    }
    return answerMenu(call, request, &appendMenu);
}

int FinderBusObject::menuOfPaths(sd_bus_message* call, sd_bus_error* error) {
    CallArguments arguments(call);
    const MenuRequest request = arguments.place();
    noteSize(request);
    if (!arguments.error().empty()) {
        return refuseArguments(error, arguments);
    }
    return answerMenu(call, request, &appendMenuInBytes);
}

int FinderBusObject::answerMenu(sd_bus_message* call, const MenuRequest& request,
                                AppendMenu append) {
    noteKind(request.kind);
    const auto menu = menuForRequest(extension_, request);
    sd_bus_message* made = nullptr;
    int result = sd_bus_message_new_method_return(call, &made);
    const Message reply(made);
    if (result >= 0) {
        result = append(made, menu);
    }
    if (result >= 0) {
        result = sd_bus_send(nullptr, made, nullptr);
    }
    return result < 0 ? result : kAnswered;
}

int FinderBusObject::run(sd_bus_message* call, sd_bus_error* error) {
    CallArguments arguments(call);
    MenuRequest request;
    request.kind = FI::MenuKind{arguments.number()};
    const char* const action = arguments.text();
    request.selection = arguments.fileURLs();
    request.target = arguments.fileURLOrNone();
    noteSize(request);
    const std::uint64_t deadline = arguments.number();
    if (!arguments.error().empty()) {
        return refuseArguments(error, arguments);
    }
    return runEntry(call, error, request, action, deadline);
}

int FinderBusObject::runOnPaths(sd_bus_message* call, sd_bus_error* error) {
    CallArguments arguments(call);
    const char* const action = arguments.text();
    const MenuRequest request = arguments.place();
    noteSize(request);
    const std::uint64_t deadline = arguments.number();
    if (!arguments.error().empty()) {
        return refuseArguments(error, arguments);
    }
    return runEntry(call, error, request, action, deadline);
}

int FinderBusObject::runEntry(sd_bus_message* call, sd_bus_error* error, const MenuRequest& request,
                              const char* action, std::uint64_t deadline) {
    const auto isTooLate = [&] {
        return isPast(deadline);
    };
    noteKind(request.kind);
    const RunResult result =
        isTooLate() ? RunResult::kTooLate : runEntryOfMenu(extension_, request, action, isTooLate);
    switch (result) {
    case RunResult::kTooLate:
        return refuse(error, FinderInterface::kErrorTooLate,
                      "the deadline had passed, and nothing was done");
    case RunResult::kNotInMenu:
        return refuse(error, FinderInterface::kErrorNotInMenu,
                      "the menu has no enabled entry with this action");
    default:
        return answer(call);
    }
}

int FinderBusObject::beginObserving(sd_bus_message* call, sd_bus_error* error) {
    CallArguments arguments(call);
    const auto folder = arguments.fileURL();
    const bool untilCallerGoes = arguments.flag();
    if (!arguments.error().empty()) {
        return refuseArguments(error, arguments);
    }
    const NS::Ref<NS::URL> url(*folder);
    if (!untilCallerGoes) {
        extension_->beginObservingDirectoryAtURL(url);
    } else if (!folders_.begin(senderOf(call), url)) {
        return refuse(error, FinderInterface::kErrorLimitsExceeded,
                      "the caller observes too many folders, or the path is too long");
    }
    return answer(call);
}

int FinderBusObject::endObserving(sd_bus_message* call, sd_bus_error* error) {
    CallArguments arguments(call);
    const auto folder = arguments.fileURL();
    if (!arguments.error().empty()) {
        return refuseArguments(error, arguments);
    }
    const NS::Ref<NS::URL> url(*folder);
    if (!folders_.end(senderOf(call), url)) {
        extension_->endObservingDirectoryAtURL(url);
    }
    return answer(call);
}

int FinderBusObject::requestBadge(sd_bus_message* call, sd_bus_error* error) {
    CallArguments arguments(call);
    const auto item = arguments.fileURL();
    if (!arguments.error().empty()) {
        return refuseArguments(error, arguments);
    }
    extension_->requestBadgeIdentifierForURL(NS::Ref<NS::URL>(*item));
    return answer(call);
}

int FinderBusObject::nameLost(sd_bus_message* signal, sd_bus_error*) {
    folders_.callerGone(CallArguments(signal).text());
    return 0; // others may want it as well
}

int FinderBusObject::guarded(Handler handler, sd_bus_message* message, sd_bus_error* error) {
    if (raised_) {
        return refuse(error, FinderInterface::kErrorRaised, "the extension is about to end");
    }
    try {
        return (this->*handler)(message, error);
    } catch (const std::exception& exception) {
        return keepRaised(error, exception.what());
    } catch (...) {
        return keepRaised(error, "exception of an unknown type");
    }
}

// Also of a request that is refused.
void FinderBusObject::noteSize(const MenuRequest& request) {
    wasLarge_ = wasLarge_ || (request.selection && request.selection->count() >= kLargeSelection);
}

// Making the toolbar's menu asks the host for its record.
void FinderBusObject::noteKind(FI::MenuKind kind) {
    if (kind == FI::MenuKind::kToolbarItemMenu) {
        state_.noteAsked();
    }
}

int FinderBusObject::keepRaised(sd_bus_error* error, const char* what) {
    raised_ = std::current_exception();
    // Foreign text may be of any bytes; a bus cuts off who sends what is not UTF-8.
    const NS::Ref<NS::String> text = NS::String::fromFileSystemRepresentation(what);
    NS::Log("a call over the session bus raised %@", text);
    return refuse(error, FinderInterface::kErrorRaised, text->utf8().c_str());
}

} // namespace Shell
