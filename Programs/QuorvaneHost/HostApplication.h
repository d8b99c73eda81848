#pragma once

#include "Platform/Ports/MachPort.h"
#include "Programs/QuorvaneHost/DriveFolder.h"
#include "Programs/QuorvaneHost/Journal.h"
#include "QVFinderExtension/QVExtensionCommsServer.h"

#include <cstdint>
#include <string>

// A host application for tests, demonstrations and development: serves a real folder as the drive
// to every extension that announces itself. Belongs to the thread whose run loop serves it.
class HostApplication final : public NS::MachPortDelegate {
    NS_OBJECT(HostApplication)
  public:
    struct Account {
        std::string plan = "Personal";
        std::int64_t quotaMebibytes = 5120;
    };

    // The journal outlives the application.
    HostApplication(DriveFolder drive, Account account, Journal& journal);
    ~HostApplication() override;

    // Opens the host's end of the link. False when another host has it already.
    bool start();
    // Tells every extension to end.
    void stop();

    // Handlers: "ext_alive" is answered with the drive's mount path, "ext_req_userinfo" with the
    // account record, to everybody.
    void clientAlive(NS::RefPtr<NS::MachPort> client);
    void userInfoRequested();

    // Stands before the server on its port, so that the journal sees each request with its client.
    void handlePortMessage(const NS::Ref<NS::PortMessage>& message) override;

  private:
    DriveFolder drive_;
    Account account_;
    Journal& journal_;
    NS::RefPtr<QVExtensionCommsServer> server_;
};
