#include "Shell/Testing/BusPeer.h"

#include "Platform/Ports/Testing/PumpUntil.h"
#include "Shell/FinderInterface.h"

#include <algorithm>
#include <memory>
#include <optional>
#include <stdexcept>
#include <utility>

namespace Tests {

namespace {

using OnAnswer = std::function<void(std::string)>;

constexpr const char* kProperties = "org.freedesktop.DBus.Properties";

void require(int result, const char* what) {
    if (result < 0) {
        throw std::runtime_error(std::string("the bus refuses: ") + what);
    }
}

std::string valuesOf(sd_bus_message* message);

std::string containerOf(sd_bus_message* message, char type, const char* contents) {
    require(sd_bus_message_enter_container(message, type, contents), "a container");
    const std::string values = valuesOf(message);
    require(sd_bus_message_exit_container(message), "the end of a container");
    return type == 'a' ? "[" + values + "]" : type == 'v' ? values : "(" + values + ")";
}

// Each NUL as "|".
std::string bytesOf(sd_bus_message* message) {
    const void* bytes = nullptr;
    std::size_t size = 0;
    require(sd_bus_message_read_array(message, 'y', &bytes, &size), "bytes");
    std::string text(static_cast<const char*>(bytes), size);
    std::ranges::replace(text, '\0', '|');
    return text;
}

std::string basicOf(sd_bus_message* message, char type) {
    union {
        const char* text;
        std::uint64_t number;
        int flag;
    } value{};
    require(sd_bus_message_read_basic(message, type, &value), "a value");
    switch (type) {
    case 's':
        return "\"" + std::string(value.text) + "\"";
    case 't':
        return std::to_string(value.number);
    case 'b':
        return value.flag != 0 ? "true" : "false";
    default:
        throw std::runtime_error("a type that no member has");
    }
}

// What is left of the container that is being read.
std::string valuesOf(sd_bus_message* message) {
    std::string text;
    char type = 0;
    const char* contents = nullptr;
    while (sd_bus_message_peek_type(message, &type, &contents) > 0) {
        text += text.empty() ? "" : " ";
        text += contents == nullptr                 ? basicOf(message, type)
                : std::string_view(contents) == "y" ? bytesOf(message)
                                                    : containerOf(message, type, contents);
    }
    return text;
}

int answered(sd_bus_message* answer, void* data, sd_bus_error*) {
    const auto onAnswer = std::exchange(*static_cast<OnAnswer*>(data), nullptr);
    const sd_bus_error* const error = sd_bus_message_get_error(answer);
    if (onAnswer) {
        onAnswer(error == nullptr ? valuesOf(answer)
                                  : std::string("error ") + error->name + ": " + error->message);
    }
    return 1;
}

int changed(sd_bus_message* signal, void* data, sd_bus_error*) {
    auto& changes = *static_cast<std::vector<std::string>*>(data);
    require(sd_bus_message_skip(signal, "s"), "the interface");
    require(sd_bus_message_enter_container(signal, 'a', "{sv}"), "the properties");
    while (sd_bus_message_enter_container(signal, 'e', "sv") > 0) {
        const std::string name = basicOf(signal, 's');
        changes.push_back(name.substr(1, name.size() - 2) + "=" + valuesOf(signal));
        require(sd_bus_message_exit_container(signal), "the end of a property");
    }
    return 0;
}

void appendPlace(sd_bus_message* call, const PlaceArguments& place) {
    require(sd_bus_message_open_container(call, 'a', "s"), "a selection");
    for (const std::string& item : place.selection) {
        require(sd_bus_message_append_basic(call, 's', item.c_str()), "an item");
    }
    require(sd_bus_message_close_container(call), "a selection of this size");
    require(sd_bus_message_append(call, "s", place.target.c_str()), "a target");
}

std::string placeOf(std::uint64_t kind, std::string_view selection, std::string_view target) {
    std::string place{Shell::FinderInterface::kPlaceForm, static_cast<char>(kind)};
    return place.append(target).append(1, '\0').append(selection);
}

void appendBytes(sd_bus_message* call, std::string_view bytes) {
    require(sd_bus_message_append_array(call, 'y', bytes.data(), bytes.size()), "bytes");
}

} // namespace

BusPeer::BusPeer() {
    require(connection_->open(), "a connection");
    connection_->schedule();
}

BusPeer::~BusPeer() {
    connection_->close();
}

std::string BusPeer::call(const char* member, const Append& append) {
    sd_bus_message* const call = newCall(Shell::FinderInterface::kInterface, member);
    if (append) {
        append(call);
    }
    return answerTo(call);
}

std::string BusPeer::menu(std::uint64_t kind, const PlaceArguments& place) {
    return call("Menu", [&](sd_bus_message* call) {
        require(sd_bus_message_append(call, "t", kind), "a kind");
        appendPlace(call, place);
    });
}

std::string BusPeer::run(std::uint64_t kind, const std::string& action, const PlaceArguments& place,
                         std::uint64_t deadline) {
    return call("Run", [&](sd_bus_message* call) {
        require(sd_bus_message_append(call, "ts", kind, action.c_str()), "an action");
        appendPlace(call, place);
        require(sd_bus_message_append(call, "t", deadline), "a deadline");
    });
}

std::string BusPeer::menuOfPaths(std::uint64_t kind, std::string_view selection,
                                 std::string_view target) {
    return menuOfPlace(placeOf(kind, selection, target));
}

std::string BusPeer::menuOfPlace(std::string_view bytes) {
    return call("MenuOfPaths", [&](sd_bus_message* call) { appendBytes(call, bytes); });
}

std::string BusPeer::runOnPaths(const std::string& action, std::string_view selection,
                                std::string_view target, std::uint64_t deadline) {
    return call("RunOnPaths", [&](sd_bus_message* call) {
        require(sd_bus_message_append(call, "s", action.c_str()), "an action");
        appendBytes(call, placeOf(0, selection, target));
        require(sd_bus_message_append(call, "t", deadline), "a deadline");
    });
}

std::string BusPeer::beginObserving(const std::string& folder, bool untilCallerGoes) {
    return call("BeginObserving", [&](sd_bus_message* call) {
        require(sd_bus_message_append(call, "sb", folder.c_str(), untilCallerGoes), "a folder");
    });
}

std::string BusPeer::endObserving(const std::string& folder) {
    return call("EndObserving", [&](sd_bus_message* call) {
        require(sd_bus_message_append(call, "s", folder.c_str()), "a folder");
    });
}

std::string BusPeer::property(const char* name) {
    sd_bus_message* const call = newCall(kProperties, "Get");
    require(sd_bus_message_append(call, "ss", Shell::FinderInterface::kInterface, name), "a name");
    return answerTo(call);
}

std::string BusPeer::introspection() {
    return answerTo(newCall("org.freedesktop.DBus.Introspectable", "Introspect"));
}

void BusPeer::send(const char* member, const Append& append, OnAnswer onAnswer) {
    sd_bus_message* const call = newCall(Shell::FinderInterface::kInterface, member);
    append(call);
    send(call, std::move(onAnswer));
}

void BusPeer::followProperties() {
    require(sd_bus_match_signal(connection_->bus(), nullptr, Shell::FinderInterface::kName,
                                Shell::FinderInterface::kObject, kProperties, "PropertiesChanged",
                                changed, &changes),
            "a match");
}

bool BusPeer::nameHasOwner(const char* name) {
    return sd_bus_get_name_creds(connection_->bus(), name, 0, nullptr) >= 0;
}

bool BusPeer::hasName(const char* name) {
    sd_bus_creds* owner = nullptr;
    const char* ownerName = nullptr;
    const char* own = nullptr;
    const bool known =
        sd_bus_get_name_creds(connection_->bus(), name, SD_BUS_CREDS_UNIQUE_NAME, &owner) >= 0 &&
        sd_bus_creds_get_unique_name(owner, &ownerName) >= 0 &&
        sd_bus_get_unique_name(connection_->bus(), &own) >= 0;
    const bool same = known && std::string(ownerName) == own;
    sd_bus_creds_unref(owner);
    return same;
}

void BusPeer::takeName(const char* name) {
    require(sd_bus_request_name(connection_->bus(), name, 0), "a name");
}

void BusPeer::releaseName(const char* name) {
    require(sd_bus_release_name(connection_->bus(), name), "to let go of a name");
}

sd_bus_message* BusPeer::newCall(const char* interface, const char* member) {
    sd_bus_message* call = nullptr;
    require(sd_bus_message_new_method_call(connection_->bus(), &call, Shell::FinderInterface::kName,
                                           Shell::FinderInterface::kObject, interface, member),
            "a call");
    return call;
}

std::string BusPeer::answerTo(sd_bus_message* call) {
    // The answer may come after this has given up.
    const auto answer = std::make_shared<std::optional<std::string>>();
    send(call, [answer](std::string text) { *answer = std::move(text); });
    return NS::pumpUntil([&] { return answer->has_value() || isLost; }) && answer->has_value()
               ? **answer
               : "no answer";
}

// Takes the call over.
void BusPeer::send(sd_bus_message* call, OnAnswer onAnswer) {
    constexpr std::uint64_t kAMinute = 60'000'000;
    onAnswer_.push_back(std::move(onAnswer));
    const int result =
        sd_bus_call_async(connection_->bus(), nullptr, call, answered, &onAnswer_.back(), kAMinute);
    sd_bus_message_unref(call);
    require(result, "to send a call");
}

} // namespace Tests
