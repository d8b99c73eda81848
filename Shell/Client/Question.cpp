#include "Shell/Client/Question.h"

#include "Shell/FinderInterface.h"

#include <string_view>
#include <system_error>

namespace Shell {

namespace {

constexpr std::uint64_t kForEver = UINT64_MAX;
// What an array of the bus may hold; a message may be twice as long.
constexpr std::size_t kLongestArray = std::size_t{64} << 20U;

struct ErrorOutcome {
    std::string_view name;
    Outcome outcome;
};
constexpr ErrorOutcome kErrors[] = {
    {FinderInterface::kErrorNotInMenu,            Outcome::kNotInMenu},
    {FinderInterface::kErrorTooLate,              Outcome::kTimedOut },
    {"org.freedesktop.DBus.Error.NoReply",        Outcome::kAbsent   },
    {"org.freedesktop.DBus.Error.ServiceUnknown", Outcome::kAbsent   },
    {"org.freedesktop.DBus.Error.NameHasNoOwner", Outcome::kAbsent   },
    {"org.freedesktop.DBus.Error.Disconnected",   Outcome::kAbsent   },
    {"org.freedesktop.DBus.Error.LimitsExceeded", Outcome::kTooLarge },
};

// A text takes its length, its bytes, a NUL, and up to three bytes that align the next one.
std::size_t sizeOnBus(const std::vector<std::string>& texts) {
    std::size_t size = 0;
    for (const std::string& text : texts) {
        size += text.size() + 8;
    }
    return size;
}

} // namespace

Outcome outcomeOf(sd_bus_message* reply) {
    const sd_bus_error* const error = sd_bus_message_get_error(reply);
    if (error == nullptr) {
        return Outcome::kDone;
    }
    for (const ErrorOutcome& known : kErrors) {
        if (known.name == error->name) {
            return known.outcome;
        }
    }
    return Outcome::kFailed;
}

Question::Question(ClientConnection& connection, const std::string& owner, const char* method)
    : connection_(connection) {
    sd_bus_message* call = nullptr;
    check(sd_bus_message_new_method_call(connection.bus(), &call, owner.c_str(),
                                         FinderInterface::kObject, FinderInterface::kInterface,
                                         method));
    call_.reset(call);
}

Question::~Question() = default;

void Question::check(int result) {
    if (result < 0 && failure_ == 0) {
        failure_ = result;
    }
}

void Question::append(std::uint64_t number) {
    if (failure_ == 0) {
        check(sd_bus_message_append_basic(call_.get(), SD_BUS_TYPE_UINT64, &number));
    }
}

void Question::append(const std::string& text) {
    if (failure_ == 0) {
        check(sd_bus_message_append_basic(call_.get(), SD_BUS_TYPE_STRING, text.c_str()));
    }
}

void Question::append(const std::vector<std::string>& texts) {
    if (sizeOnBus(texts) > kLongestArray) {
        check(-EMSGSIZE);
    }
    if (failure_ == 0) {
        check(sd_bus_message_open_container(call_.get(), SD_BUS_TYPE_ARRAY, "s"));
    }
    for (const std::string& text : texts) {
        append(text);
    }
    if (failure_ == 0) {
        check(sd_bus_message_close_container(call_.get()));
    }
}

int Question::answered(sd_bus_message* reply, void* object, sd_bus_error*) noexcept {
    static_cast<Question*>(object)->reply_.reset(sd_bus_message_ref(reply));
    return 1;
}

std::optional<Outcome> Question::ask(ClientConnection::Clock::time_point deadline) {
    sd_bus_slot* slot = nullptr;
    if (failure_ == 0) {
        check(sd_bus_call_async(connection_.bus(), &slot, call_.get(), &answered, this, kForEver));
        slot_.reset(slot);
    }
    if (failure_ != 0) {
        error_ = std::system_category().message(-failure_);
        return failure_ == -EMSGSIZE ? Outcome::kTooLarge : Outcome::kFailed;
    }
    if (!connection_.waitUntil([this] { return reply_ != nullptr; }, deadline)) {
        slot_.reset(); // an answer that comes now is nobody's
        return connection_.bus() == nullptr ? std::optional(Outcome::kAbsent) : std::nullopt;
    }
    const Outcome outcome = outcomeOf(reply_.get());
    if (const sd_bus_error* const error = sd_bus_message_get_error(reply_.get())) {
        error_ = error->message != nullptr ? error->message : error->name;
    }
    return outcome;
}

std::optional<Menu> Question::menu() const {
    Menu menu;
    const char* title = nullptr;
    if (sd_bus_message_read(reply_.get(), "s", &title) < 0 ||
        sd_bus_message_enter_container(reply_.get(), SD_BUS_TYPE_ARRAY, "(ssb)") < 0) {
        return std::nullopt;
    }
    menu.title = title;
    const char* action = nullptr;
    int enabled = 0;
    int result = 0;
    while ((result = sd_bus_message_read(reply_.get(), "(ssb)", &title, &action, &enabled)) > 0) {
        menu.entries.push_back({title, action, enabled != 0});
    }
    return result < 0 ? std::nullopt : std::optional(std::move(menu));
}

} // namespace Shell
