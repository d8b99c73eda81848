#include "Benchmarks/Support/Peer.h"
#include "Benchmarks/Support/Transport.h"

#include <array>
#include <cstdint>
#include <string>
#include <system_error>
#include <systemd/sd-bus.h>

namespace Benchmarks {

namespace {

constexpr const char* kService = "com.Quorvane.Benchmark";
constexpr const char* kPath = "/com/Quorvane/Benchmark";
constexpr const char* kAction = "ext_share ";

int checked(int result, const char* what) {
    if (result < 0) {
        throw std::system_error(-result, std::generic_category(), what);
    }
    return result;
}

// A connection to the bus daemon, which passes everything on to another.
class BusTransport final : public Transport {
  public:
    explicit BusTransport(const std::filesystem::path& folder) {
        const std::string address = "unix:path=" + (folder / "bus").string();
        checked(::sd_bus_new(&bus_), "sd_bus_new");
        checked(::sd_bus_set_address(bus_, address.c_str()), "sd_bus_set_address");
        checked(::sd_bus_set_bus_client(bus_, 1), "sd_bus_set_bus_client");
        checked(::sd_bus_start(bus_), "sd_bus_start");
        checked(::sd_bus_add_object(bus_, nullptr, kPath, &received, this), "sd_bus_add_object");
    }
    ~BusTransport() override { (void)::sd_bus_flush_close_unref(bus_); }

    void requestName() { checked(::sd_bus_request_name(bus_, kService, 0), "sd_bus_request_name"); }

    void post() override { postTo(kService); }
    void postToSender() { postTo(sender_.c_str()); }

    void awaitAnswer() override { receive(1); }

    void receive(std::size_t count) {
        while (received_ < count) {
            if (checked(::sd_bus_process(bus_, nullptr), "sd_bus_process") == 0) {
                checked(::sd_bus_wait(bus_, UINT64_MAX), "sd_bus_wait");
            }
        }
        received_ -= count;
    }

  private:
    static int received(sd_bus_message* message, void* data, sd_bus_error*) {
        auto& self = *static_cast<BusTransport*>(data);
        const char* action = nullptr;
        const void* archive = nullptr;
        std::size_t length = 0;
        checked(::sd_bus_message_read(message, "s", &action), "sd_bus_message_read");
        checked(::sd_bus_message_read_array(message, 'y', &archive, &length),
                "sd_bus_message_read_array");
        self.received_ += length == kArchiveLength ? 1 : 0;
        self.sender_ = ::sd_bus_message_get_sender(message);
        return 1;
    }

    void postTo(const char* destination) {
        sd_bus_message* message = nullptr;
        checked(
            ::sd_bus_message_new_method_call(bus_, &message, destination, kPath, kService, "Post"),
            "sd_bus_message_new_method_call");
        checked(::sd_bus_message_set_expect_reply(message, 0), "sd_bus_message_set_expect_reply");
        checked(::sd_bus_message_append(message, "s", kAction), "sd_bus_message_append");
        checked(::sd_bus_message_append_array(message, 'y', archive_.data(), archive_.size()),
                "sd_bus_message_append_array");
        checked(::sd_bus_send(bus_, message, nullptr), "sd_bus_send");
        (void)::sd_bus_message_unref(message);
    }

    sd_bus* bus_ = nullptr;
    std::string sender_;
    std::size_t received_ = 0;
    std::array<std::byte, kArchiveLength> archive_{};
};

std::unique_ptr<Transport> connectBus(const std::filesystem::path& folder, std::size_t) {
    return std::make_unique<BusTransport>(folder);
}

void serveBus(const std::filesystem::path& folder, std::size_t batch) {
    BusTransport transport(folder);
    transport.requestName();
    Peer::sayReady();
    for (;;) {
        transport.receive(batch);
        transport.postToSender();
    }
}

} // namespace

const TransportKind kBus{"sd-bus", &connectBus, &serveBus};

} // namespace Benchmarks
