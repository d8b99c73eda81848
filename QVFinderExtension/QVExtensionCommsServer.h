#pragma once

#include "Platform/Foundation/NotificationCenter.h"
#include "QVFinderExtension/QVExtensionCommsComponent.h"

// What the server posts about a client's port that it drops; the object is the port's description.
inline constexpr std::string_view kPortInvalidatedNotification = "nc_portinv";

// The host application's end of the link: knows the extensions that announced themselves, speaks to
// all of them at once, and drops those whose process is gone when it comes across them.
class QVExtensionCommsServer final : public QVExtensionCommsComponent {
    NS_OBJECT(QVExtensionCommsServer)
  public:
    // The one server under the well-known name, made on the first call and served by the run loop
    // of the thread that makes it; that thread must be the first to call.
    static NS::Ref<QVExtensionCommsServer> defaultServer();

    explicit QVExtensionCommsServer(const NS::Ref<NS::String>& name);

    // Sends an action with its payload, each element one keyed archive, to every live client once
    // for each time that it announced itself. Drops dead clients on the way.
    void broadcastAction_data(const NS::Ref<NS::String>& action, const NS::Array& data);
    // The account record, or nil.
    void broadcastUserInfo(const NS::RefPtr<NS::Object>& info);
    void broadcastNetworkActivityBegin();
    void broadcastNetworkActivityEnd();
    // Ends every extension; the list of clients stays as it is.
    void broadcastShutdown();

    // True when a client is alive; drops every dead one.
    bool hasClients();

    // Handler of "ext_alive": appends the client's port, however often it stands there already.
    void extensionAlive(NS::RefPtr<NS::MachPort> client);
    // Posts kPortInvalidatedNotification, then removes every entry that equals the port.
    void removeInvalidatedPort(const NS::Ref<NS::MachPort>& client);

    // Where kPortInvalidatedNotification is posted; this server's own.
    NS_PROPERTY(NS::NotificationCenter, notificationCenter, setNotificationCenter)
    // The clients' ports (MachPort), in the order of their announcements.
    NS_PROPERTY(NS::MutableArray, ports, setPorts)
};
