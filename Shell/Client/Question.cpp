#include "Shell/Client/Question.h"

#include "Shell/Client/DecodedMenu.h"
#include "Shell/FinderInterface.h"

#include <algorithm>
#include <cerrno>
#include <system_error>

namespace Shell {

namespace {

// What an array of the bus may hold. A message may be twice as long, so that a place that fits
// leaves room for the action beside it, which comes from a menu and is short.
constexpr std::size_t kLongestArray = std::size_t{64} << 20U;
constexpr std::size_t kLongestText = std::size_t{16} << 20U;

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
};

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

Question::Question(ClientConnection& connection, const FollowedExtension& extension,
                   const char* method)
    : connection_(connection), extension_(extension), owner_(extension.owner()) {
    sd_bus_message* call = nullptr;
    check(sd_bus_message_new_method_call(connection.bus(), &call, owner_.c_str(),
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

void Question::append(std::string_view text) {
    if (text.size() > kLongestText) {
        check(-EMSGSIZE);
    } else if (text.find('\0') != std::string_view::npos) {
        check(-EINVAL); // or less than it would be asked for
    }
    if (failure_ == 0) {
        check(sd_bus_message_append_basic(call_.get(), SD_BUS_TYPE_STRING,
                                          std::string(text).c_str()));
    }
}

// A form, the kind, then texts with a NUL behind each.
void Question::append(MenuKind kind, const OfferedPlace& place) {
    const std::size_t targetLength = place.target.size() + 1; // with the NUL that it has anyway
    char* bytes = spaceFor(2 + targetLength + place.items.size());
    if (bytes == nullptr) {
        return;
    }
    *bytes++ = FinderInterface::kPlaceForm;
    *bytes++ = static_cast<char>(kind);
    bytes = std::copy_n(place.target.c_str(), targetLength, bytes);
    place.items.copyTo(bytes);
}

// Where so many bytes go, as an argument; null when they do not fit.
char* Question::spaceFor(std::size_t bytes) {
    if (bytes > kLongestArray) {
        check(-EMSGSIZE);
    }
    void* space = nullptr;
    if (failure_ == 0) {
        check(sd_bus_message_append_array_space(call_.get(), SD_BUS_TYPE_BYTE, bytes, &space));
    }
    return failure_ == 0 ? static_cast<char*>(space) : nullptr;
}

Outcome Question::ask(ClientConnection::Clock::time_point deadline) {
    if (failure_ != 0) {
        return failed();
    }
    // One question at a time waits for a bus that takes nothing, or they would fill the memory.
    if (connection_.unsent() != 0) {
        (void)connection_.waitUntil([this] { return connection_.unsent() == 0 || !isAsking(); },
                                    deadline);
    }
    if (connection_.unsent() != 0 || !isAsking()) {
        return unanswered();
    }
    check(connection_.ask(call_.get()));
    if (failure_ != 0) {
        return failed();
    }
    (void)connection_.waitUntil([this] { return connection_.isAnswered() || !isAsking(); },
                                deadline);
    reply_ = connection_.takeAnswer();
    if (!reply_) {
        return unanswered();
    }
    if (const sd_bus_error* const error = sd_bus_message_get_error(reply_.get())) {
        error_ = error->message != nullptr ? error->message : error->name;
    }
    return outcomeOf(reply_.get());
}

Outcome Question::unanswered() const noexcept {
    return isAsking() && connection_.bus() != nullptr ? Outcome::kTimedOut : Outcome::kAbsent;
}

Outcome Question::failed() {
    error_ = std::system_category().message(-failure_);
    return failure_ == -EMSGSIZE ? Outcome::kTooLarge : Outcome::kFailed;
}

std::optional<Menu> Question::menu() const {
    const void* bytes = nullptr;
    std::size_t size = 0;
    if (sd_bus_message_read_array(reply_.get(), SD_BUS_TYPE_BYTE, &bytes, &size) < 0) {
        return std::nullopt;
    }
    return decodedMenu({static_cast<const char*>(bytes), size});
}

} // namespace Shell
