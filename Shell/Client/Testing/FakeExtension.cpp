#include "Shell/Client/Testing/FakeExtension.h"

#include "Shell/FinderInterface.h"
#include "Tests/Support/Process.h"

#include <algorithm>
#include <future>
#include <poll.h>
#include <stdexcept>
#include <sys/eventfd.h>
#include <unistd.h>
#include <utility>

namespace Tests {

namespace {

using namespace Shell::FinderInterface;

constexpr const char* kPropertyNames[] = {
    "WatchedFolders",   "Generation",           "ToolbarItemName", "ToolbarItemToolTip",
    "ToolbarItemImage", "ToolbarItemImageFile", "HostAnswers",
};

void require(int result, const char* what) {
    if (result < 0) {
        throw std::runtime_error(std::string("the bus refuses: ") + what);
    }
}

std::string bytesOf(sd_bus_message* call) {
    const void* bytes = nullptr;
    std::size_t size = 0;
    require(sd_bus_message_read_array(call, 'y', &bytes, &size), "bytes");
    return {static_cast<const char*>(bytes), size};
}

std::string bytesOf(const Shell::Menu& menu) {
    std::string bytes = kMenuForm + menu.title + '\0';
    for (const Shell::MenuEntry& entry : menu.entries) {
        bytes += (entry.enabled ? '\1' : '\0') + entry.title + '\0' + entry.action + '\0';
    }
    return bytes;
}

// A place in bytes: its kind, and what else it is, as "[/a /b] /t".
struct ReadPlace {
    explicit ReadPlace(const std::string& bytes) : kind(std::to_string(bytes.at(1))) {
        const std::size_t targetEnd = bytes.find('\0', 2);
        std::string paths = bytes.substr(targetEnd + 1);
        if (!paths.empty() && paths.back() == '\0') {
            paths.pop_back();
        }
        std::ranges::replace(paths, '\0', ' ');
        text = "[" + paths + "] " + bytes.substr(2, targetEnd - 2);
    }

    std::string kind;
    std::string text;
};

} // namespace

FakeExtension::FakeExtension(std::vector<std::string> watchedFolders)
    : event_(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)), watchedFolders_(std::move(watchedFolders)) {
    sd_bus* bus = nullptr;
    require(sd_bus_open_user(&bus), "a connection");
    bus_.reset(bus);
    require(sd_bus_add_object(bus, nullptr, kObject, &called, this), "an object");
    thread_ = std::thread([this] { serve(); });
}

FakeExtension::~FakeExtension() {
    perform([this] {
        isEnding_ = true;
        for (sd_bus_message* const call : kept_) {
            sd_bus_message_unref(call);
        }
    });
    thread_.join();
    ::close(event_);
}

void FakeExtension::serve() {
    while (!isEnding_) {
        std::vector<std::function<void()>> work;
        {
            const std::lock_guard lock(mutex_);
            work.swap(work_);
        }
        for (const auto& each : work) {
            each();
        }
        if (isEnding_ || sd_bus_process(bus_.get(), nullptr) > 0) {
            continue;
        }
        pollfd ready[] = {
            {event_,                    POLLIN,                                            0},
            {sd_bus_get_fd(bus_.get()), static_cast<short>(sd_bus_get_events(bus_.get())), 0},
        };
        (void)::poll(ready, 2, -1);
        std::uint64_t count = 0;
        [[maybe_unused]] const ssize_t taken = ::read(event_, &count, sizeof count);
    }
}

void FakeExtension::perform(std::function<void()> work) {
    std::promise<void> done;
    {
        const std::lock_guard lock(mutex_);
        work_.emplace_back([&] {
            try {
                work();
                done.set_value();
            } catch (...) {
                done.set_exception(std::current_exception());
            }
        });
    }
    const std::uint64_t one = 1;
    [[maybe_unused]] const ssize_t written = ::write(event_, &one, sizeof one);
    done.get_future().get();
}

void FakeExtension::wait() {
    perform([this] { require(sd_bus_request_name(bus_.get(), kWaitingName, 0), "the name"); });
}

void FakeExtension::appear() {
    perform([this] { require(sd_bus_request_name(bus_.get(), kName, 0), "the name"); });
}

void FakeExtension::disappear() {
    perform([this] { require(sd_bus_release_name(bus_.get(), kName), "to go"); });
}

void FakeExtension::keepCalls() {
    perform([this] { keepsCalls_ = true; });
}

void FakeExtension::answerKept() {
    perform([this] {
        keepsCalls_ = false;
        for (sd_bus_message* const call : std::exchange(kept_, {})) {
            answer(call);
            sd_bus_message_unref(call);
        }
    });
}

void FakeExtension::refuseWith(std::string error, std::string message) {
    perform([&] {
        error_ = std::move(error);
        message_ = std::move(message);
    });
}

void FakeExtension::setImageFile(std::string url) {
    perform([&] { imageFile_ = std::move(url); });
}

void FakeExtension::setMenu(Shell::Menu menu) {
    perform([&] { menu_ = std::move(menu); });
}

void FakeExtension::setMenuMalformed() {
    perform([&] { isMenuMalformed_ = true; });
}

void FakeExtension::setWatchedFolders(std::vector<std::string> folders) {
    perform([&] {
        watchedFolders_ = std::move(folders);
        tellChange("WatchedFolders");
        awaitBus();
    });
}

void FakeExtension::changeGeneration(int times) {
    perform([&] {
        for (int i = 0; i < times; ++i) {
            ++generation_;
            tellChange("Generation");
        }
        awaitBus();
    });
}

void FakeExtension::changeToolTip(std::string toolTip) {
    perform([&] {
        toolTip_ = std::move(toolTip);
        tellChange("ToolbarItemToolTip");
        awaitBus();
    });
}

void FakeExtension::changeHostAnswers(bool value) {
    perform([&] {
        hostAnswers_ = value;
        tellChange("HostAnswers");
        awaitBus();
    });
}

std::vector<std::string> FakeExtension::calls() {
    std::vector<std::string> calls;
    perform([&] { calls = calls_; });
    return calls;
}

bool FakeExtension::waitForCalls(std::size_t count) {
    return waitUntil([&] { return calls().size() >= count; });
}

std::uint64_t FakeExtension::deadline() {
    std::uint64_t deadline = 0;
    perform([&] { deadline = deadline_; });
    return deadline;
}

int FakeExtension::called(sd_bus_message* call, void* object, sd_bus_error*) {
    static_cast<FakeExtension*>(object)->take(call);
    return 1;
}

void FakeExtension::take(sd_bus_message* call) {
    const std::string member = sd_bus_message_get_member(call);
    if (member != "GetAll") {
        calls_.push_back(member + argumentsOf(call));
    }
    if (keepsCalls_) {
        kept_.push_back(sd_bus_message_ref(call));
    } else {
        answer(call);
    }
}

std::string FakeExtension::argumentsOf(sd_bus_message* call) {
    std::string text;
    char type = 0;
    const char* contents = nullptr;
    while (sd_bus_message_peek_type(call, &type, &contents) > 0) {
        const char* value = nullptr;
        std::uint64_t number = 0;
        int flag = 0;
        switch (type) {
        case 't':
            require(sd_bus_message_read_basic(call, type, &number), "a number");
            deadline_ = number;
            text += number > 3 ? " later" : " " + std::to_string(number);
            break;
        case 'b':
            require(sd_bus_message_read_basic(call, type, &flag), "a flag");
            text += flag != 0 ? " true" : " false";
            break;
        case 'a': {
            const ReadPlace place(bytesOf(call));
            text.insert(0, " " + place.kind).append(" ").append(place.text);
            break;
        }
        default:
            require(sd_bus_message_read_basic(call, 's', &value), "a text");
            text += " " + std::string(value);
        }
    }
    return text;
}

void FakeExtension::answer(sd_bus_message* call) {
    const std::string member = sd_bus_message_get_member(call);
    if (!error_.empty()) {
        (void)sd_bus_reply_method_errorf(call, error_.c_str(), "%s", message_.c_str());
    } else if (member == "GetAll") {
        answerProperties(call);
    } else if (member == "MenuOfPaths") {
        answerMenu(call);
    } else {
        (void)sd_bus_reply_method_return(call, "");
    }
}

void FakeExtension::answerMenu(sd_bus_message* call) {
    if (isMenuMalformed_) {
        require(sd_bus_reply_method_return(call, "t", generation_), "a number");
        return;
    }
    sd_bus_message* reply = nullptr;
    require(sd_bus_message_new_method_return(call, &reply), "an answer");
    const std::string bytes = bytesOf(menu_);
    require(sd_bus_message_append_array(reply, 'y', bytes.data(), bytes.size()), "a menu");
    require(sd_bus_send(bus_.get(), reply, nullptr), "to answer");
    sd_bus_message_unref(reply);
}

void FakeExtension::appendProperty(sd_bus_message* message, const char* name) {
    const std::string property(name);
    require(sd_bus_message_open_container(message, 'e', "sv"), "a property");
    require(sd_bus_message_append(message, "s", name), "its name");
    if (property == "WatchedFolders") {
        std::vector<char*> folders;
        for (std::string& folder : watchedFolders_) {
            folders.push_back(folder.data());
        }
        folders.push_back(nullptr);
        require(sd_bus_message_open_container(message, 'v', "as"), "a value");
        require(sd_bus_message_append_strv(message, folders.data()), "folders");
        require(sd_bus_message_close_container(message), "the end of a value");
    } else if (property == "HostAnswers") {
        require(sd_bus_message_append(message, "v", "b", static_cast<int>(hostAnswers_)), "a flag");
    } else if (property == "Generation") {
        require(sd_bus_message_append(message, "v", "t", generation_), "a number");
    } else {
        const char* const value = property == "ToolbarItemToolTip"     ? toolTip_.c_str()
                                  : property == "ToolbarItemImage"     ? "FakeImage"
                                  : property == "ToolbarItemImageFile" ? imageFile_.c_str()
                                                                       : "Fake Drive";
        require(sd_bus_message_append(message, "v", "s", value), "a text");
    }
    require(sd_bus_message_close_container(message), "the end of a property");
}

void FakeExtension::answerProperties(sd_bus_message* call) {
    sd_bus_message* reply = nullptr;
    require(sd_bus_message_new_method_return(call, &reply), "an answer");
    require(sd_bus_message_open_container(reply, 'a', "{sv}"), "properties");
    for (const char* const name : kPropertyNames) {
        appendProperty(reply, name);
    }
    require(sd_bus_message_close_container(reply), "the end of properties");
    require(sd_bus_send(bus_.get(), reply, nullptr), "to answer");
    sd_bus_message_unref(reply);
}

void FakeExtension::tellChange(const char* property) {
    sd_bus_message* signal = nullptr;
    require(sd_bus_message_new_signal(bus_.get(), &signal, kObject,
                                      "org.freedesktop.DBus.Properties", "PropertiesChanged"),
            "a signal");
    require(sd_bus_message_append(signal, "s", kInterface), "an interface");
    require(sd_bus_message_open_container(signal, 'a', "{sv}"), "properties");
    appendProperty(signal, property);
    require(sd_bus_message_close_container(signal), "the end of properties");
    require(sd_bus_message_append(signal, "as", 0), "no other properties");
    require(sd_bus_send(bus_.get(), signal, nullptr), "to tell a change");
    sd_bus_message_unref(signal);
}

// The bus takes what it is sent in order, and answers this last.
void FakeExtension::awaitBus() {
    require(sd_bus_call_method(bus_.get(), "org.freedesktop.DBus", "/org/freedesktop/DBus",
                               "org.freedesktop.DBus", "GetId", nullptr, nullptr, ""),
            "to answer");
}

} // namespace Tests
