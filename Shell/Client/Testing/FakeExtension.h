#pragma once

#include "Shell/Client/FinderClient.h"

#include <systemd/sd-bus.h>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

namespace Tests {

// An extension on the session bus, on a thread of its own, that answers as a test wants.
//
// Made, it is connected, but has not the name; appear() takes it. Every operation returns once it
// has been carried out. Throws what the bus refuses.
class FakeExtension {
  public:
    // Watches these file URLs.
    explicit FakeExtension(std::vector<std::string> watchedFolders);
    // Leaves the bus.
    ~FakeExtension();
    FakeExtension(const FakeExtension&) = delete;
    FakeExtension& operator=(const FakeExtension&) = delete;

    // Has the name of one that waits for its host, until this object goes.
    void wait();
    void appear();
    // Lets go of the name, but stays on the bus.
    void disappear();

    // Keeps what is called from now on, without an answer; answerKept() gives it.
    void keepCalls();
    void answerKept();
    // Answers with this error from now on; with none when its name is empty.
    void refuseWith(std::string error, std::string message);
    void setImageFile(std::string url);
    void setMenu(Shell::Menu menu);
    // Answers a menu with a number.
    void setMenuMalformed();

    // Tell their change; the bus has it when they return.
    void setWatchedFolders(std::vector<std::string> folders);
    void changeGeneration(int times = 1);
    void changeToolTip(std::string toolTip);
    void changeHostAnswers(bool value);

    // "MenuOfPaths 0 [/a /b] /t", "RunOnPaths 0 doIt: [/a /b] /t later", "BeginObserving file:///a
    // true", and so on.
    std::vector<std::string> calls();
    bool waitForCalls(std::size_t count);
    // What the last command had, in microseconds.
    std::uint64_t deadline();

  private:
    struct Free {
        void operator()(sd_bus* bus) const noexcept { sd_bus_close_unref(bus); }
    };

    static int called(sd_bus_message* call, void* object, sd_bus_error*);
    void perform(std::function<void()> work);
    void serve();
    void take(sd_bus_message* call);
    void answer(sd_bus_message* call);
    void answerMenu(sd_bus_message* call);
    void answerProperties(sd_bus_message* call);
    void appendProperty(sd_bus_message* message, const char* name);
    void tellChange(const char* property);
    void awaitBus();
    std::string argumentsOf(sd_bus_message* call);

    std::unique_ptr<sd_bus, Free> bus_;
    int event_;
    bool isEnding_ = false;
    std::mutex mutex_; // for what follows
    std::vector<std::function<void()>> work_;

    // On its thread.
    std::vector<std::string> watchedFolders_;
    std::uint64_t generation_ = 1;
    std::string toolTip_ = "Fake tip";
    std::string imageFile_ = "file:///icons/Fake%20Image.svg";
    bool hostAnswers_ = true;
    Shell::Menu menu_{
        "Fake", {{"Do It", "doIt:", true}, {"Told", "", false}}
    };
    bool isMenuMalformed_ = false;
    bool keepsCalls_ = false;
    std::string error_;
    std::string message_;
    std::vector<sd_bus_message*> kept_;
    std::vector<std::string> calls_;
    std::uint64_t deadline_ = 0;

    std::thread thread_;
};

} // namespace Tests
