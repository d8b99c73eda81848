#pragma once

#include "Platform/Ports/MachPort.h"
#include "Programs/QuorvaneHost/DriveFolder.h"
#include "Programs/QuorvaneHost/DriveRequests.h"
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

    // The journal outlives the application. Throws Refusal when the drive or the folder for what
    // the host remembers of it cannot be used.
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

    // Handlers of the other requests, as DriveRequests does them. After a change the account record
    // goes to everybody.
    void share(NS::RefPtr<NS::Object> path);
    void showProps(NS::RefPtr<NS::Object> path);
    void refreshFolder(NS::RefPtr<NS::Object> path);
    void moveToTrash(NS::RefPtr<NS::Object> paths);
    void restore(NS::RefPtr<NS::Object> paths);
    void remove(NS::RefPtr<NS::Object> paths);
    void emptyTrash();
    void beginObserving(NS::RefPtr<NS::Object> path, NS::RefPtr<NS::MachPort> client);
    void endObserving(NS::RefPtr<NS::Object> path, NS::RefPtr<NS::MachPort> client);
    // What the server posts about a client whose process is gone.
    void clientGone(NS::RefPtr<NS::Notification> notification);

    // Stands before the server on its port: the journal sees each request with its client, and one
    // that is not as the link has it is refused there.
    void handlePortMessage(const NS::Ref<NS::PortMessage>& message) override;

  private:
    void handleRequests();
    void broadcastAccountIf(bool changed);

    DriveFolder drive_;
    Account account_;
    Journal& journal_;
    DriveRequests requests_;
    NS::RefPtr<QVExtensionCommsServer> server_;
};
