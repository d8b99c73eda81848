#include "Benchmarks/Support/RawBusCall.h"

#include "Benchmarks/Support/Peer.h"

#include <stdexcept>
#include <systemd/sd-bus.h>

namespace Benchmarks {

namespace {

constexpr const char* kObject = "/com/Quorvane/Benchmarks";
// As long as the answer of a menu with three entries.
constexpr std::string_view kAnswer =
    ".Fennmoor Cloud..QV: Share.shareItem:..QV: Show Properties.showProps..QV: Move To "
    "Trash.moveToTrash.";

struct Unref {
    void operator()(sd_bus* bus) const noexcept { sd_bus_close_unref(bus); }
    void operator()(sd_bus_message* message) const noexcept { sd_bus_message_unref(message); }
};
using Bus = std::unique_ptr<sd_bus, Unref>;
using Message = std::unique_ptr<sd_bus_message, Unref>;

void check(int result, const char* what) {
    if (result < 0) {
        throw std::runtime_error(std::string("the session bus refuses ") + what);
    }
}

Bus connected() {
    sd_bus* bus = nullptr;
    check(sd_bus_open_user(&bus), "a connection");
    return Bus(bus);
}

int answer(sd_bus_message* call) {
    sd_bus_message* made = nullptr;
    check(sd_bus_message_new_method_return(call, &made), "an answer");
    const Message reply(made);
    check(sd_bus_message_append_array(made, 'y', kAnswer.data(), kAnswer.size()), "its bytes");
    return sd_bus_send(nullptr, made, nullptr) < 0 ? -1 : 1;
}

int takeBytes(sd_bus_message* call, void*, sd_bus_error*) {
    return answer(call);
}

int takeTexts(sd_bus_message* call, void*, sd_bus_error*) {
    const char* text = nullptr;
    check(sd_bus_message_enter_container(call, 'a', "s"), "an array");
    while (sd_bus_message_read_basic(call, 's', &text) > 0) {
    }
    return answer(call);
}

constexpr sd_bus_vtable kTable[] = {
    SD_BUS_VTABLE_START(SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_METHOD("TakeBytes", "ay", "ay", takeBytes, 0),
    SD_BUS_METHOD("TakeTexts", "as", "ay", takeTexts, 0),
    SD_BUS_VTABLE_END,
};

} // namespace

class RawBusCall::Connection {
  public:
    Message newCall(const char* method) {
        sd_bus_message* call = nullptr;
        check(sd_bus_message_new_method_call(bus_.get(), &call, kName, kObject, kName, method),
              "a call");
        return Message(call);
    }
    bool isAnswered(const Message& call) {
        sd_bus_message* reply = nullptr;
        const bool answered = sd_bus_call(bus_.get(), call.get(), 0, nullptr, &reply) >= 0;
        sd_bus_message_unref(reply);
        return answered;
    }

  private:
    Bus bus_ = connected();
};

void RawBusCall::serve() {
    const Bus bus = connected();
    check(sd_bus_add_object_vtable(bus.get(), nullptr, kObject, kName, kTable, nullptr),
          "an object");
    check(sd_bus_request_name(bus.get(), kName, 0), "a name");
    Peer::sayReady();
    for (;;) {
        const int result = sd_bus_process(bus.get(), nullptr);
        check(result, "to go on");
        if (result == 0) {
            check(sd_bus_wait(bus.get(), UINT64_MAX), "to wait");
        }
    }
}

RawBusCall::RawBusCall() : connection_(std::make_unique<Connection>()) {}

RawBusCall::~RawBusCall() = default;

bool RawBusCall::carryBytes(std::string_view bytes) {
    const Message call = connection_->newCall("TakeBytes");
    check(sd_bus_message_append_array(call.get(), 'y', bytes.data(), bytes.size()), "the bytes");
    return connection_->isAnswered(call);
}

bool RawBusCall::carryTexts(const std::vector<std::string>& texts) {
    const Message call = connection_->newCall("TakeTexts");
    check(sd_bus_message_open_container(call.get(), 'a', "s"), "an array");
    for (const std::string& text : texts) {
        check(sd_bus_message_append_basic(call.get(), 's', text.c_str()), "a text");
    }
    check(sd_bus_message_close_container(call.get()), "the end of an array");
    return connection_->isAnswered(call);
}

} // namespace Benchmarks
