#include "QVFinderExtension/QVExtensionCommsServer.h"

#include "Platform/Foundation/KeyedArchiver.h"
#include "Platform/Foundation/Log.h"
#include "QVFinderExtension/QVExtensionActions.h"

#include <algorithm>
#include <span>
#include <vector>

namespace {

constexpr NS::Method kMethods[] = {
    NS::method<&QVExtensionCommsServer::extensionAlive>("extensionAlive:"),
};

// The clients as they are now, so that those found dead can leave the list meanwhile.
NS::Ref<NS::Array> snapshotOf(const NS::RefPtr<NS::MutableArray>& ports) {
    return ports ? ports->copy() : NS::make<NS::Array>();
}

// Without a reference of its own: to count one touches memory that a broadcast does without.
NS::MachPort& portIn(const NS::Ref<NS::Object>& entry) {
    if (NS::as<NS::MachPort>(entry.get()) == nullptr) {
        NS::raiseUnrecognizedSelector(*entry, NS::MachPort::kClass);
    }
    return static_cast<NS::MachPort&>(*entry);
}

NS::Ref<NS::MachPort> portOf(const NS::Ref<NS::Object>& entry) {
    return NS::Ref<NS::MachPort>(portIn(entry));
}

} // namespace

constinit const NS::Class QVExtensionCommsServer::kClass{
    .name = "QVExtensionCommsServer",
    .superclass = &QVExtensionCommsComponent::kClass,
    .methods = kMethods,
};

NS::Ref<QVExtensionCommsServer> QVExtensionCommsServer::defaultServer() {
    // Unguarded and never released: the first call decides the thread that serves it.
    static NS::RefPtr<QVExtensionCommsServer>& server = *new NS::RefPtr<QVExtensionCommsServer>();
    if (!server) {
        server = NS::make<QVExtensionCommsServer>(NS::str(kServerPortName));
        server->setTarget_selector_for(NS::Ref<NS::Object>(*server), {"extensionAlive:"},
                                       NS::str(QVExtensionAction::kAlive));
        NS::Log("started ext. server %@", server->port());
    }
    return NS::Ref<QVExtensionCommsServer>(*server);
}

QVExtensionCommsServer::QVExtensionCommsServer(const NS::Ref<NS::String>& name)
    : QVExtensionCommsComponent(name) {
    setPorts(NS::make<NS::MutableArray>());
    setNotificationCenter(NS::make<NS::NotificationCenter>());
}

void QVExtensionCommsServer::broadcastAction_data(const NS::Ref<NS::String>& action,
                                                  const NS::Array& data) {
    const auto clients = ports();
    if (!clients) {
        return;
    }
    const NS::Ref<NS::Array> components = componentsFor(action, data);
    const auto isDead = [&](const NS::Ref<NS::Object>& entry) {
        NS::MachPort& client = portIn(entry);
        // Nothing goes out to a dead client; to ask each first costs a third more for all others.
        return !client.sendBeforeDate_components_from_reserved(noWaiting(), *components, nullptr,
                                                               0) &&
               !client.isValid();
    };
    // The list stays as it is up to the first dead client: the sending itself changes nothing.
    const auto dead = std::find_if(clients->begin(), clients->end(), isDead);
    if (dead == clients->end()) {
        return;
    }
    const std::vector<NS::Ref<NS::Object>> rest(dead, clients->end());
    removeInvalidatedPort(portOf(rest.front()));
    for (const NS::Ref<NS::Object>& entry : std::span(rest).subspan(1)) {
        if (isDead(entry)) {
            removeInvalidatedPort(portOf(entry));
        }
    }
}

void QVExtensionCommsServer::broadcastUserInfo(const NS::RefPtr<NS::Object>& info) {
    const auto archive = NS::KeyedArchiver::archivedDataWithRootObject(info);
    broadcastAction_data(NS::str(QVExtensionAction::kUserInfo),
                         *NS::Array::arrayWithObjects({archive}));
}

void QVExtensionCommsServer::broadcastNetworkActivityBegin() {
    broadcastAction_data(NS::str(QVExtensionAction::kActivityBegin), *NS::make<NS::Array>());
}

void QVExtensionCommsServer::broadcastNetworkActivityEnd() {
    broadcastAction_data(NS::str(QVExtensionAction::kActivityEnd), *NS::make<NS::Array>());
}

void QVExtensionCommsServer::broadcastShutdown() {
    broadcastAction_data(NS::str(QVExtensionAction::kServerShutdown), *NS::make<NS::Array>());
}

void QVExtensionCommsServer::extensionAlive(NS::RefPtr<NS::MachPort> client) {
    if (const auto clients = ports()) {
        clients->addObject(client);
    }
}

bool QVExtensionCommsServer::hasClients() {
    bool found = false;
    const NS::Ref<NS::Array> snapshot = snapshotOf(ports());
    for (const NS::Ref<NS::Object>& entry : *snapshot) {
        const NS::Ref<NS::MachPort> client = portOf(entry);
        if (client->isValid()) {
            found = true;
        } else {
            removeInvalidatedPort(client);
        }
    }
    return found;
}

void QVExtensionCommsServer::removeInvalidatedPort(const NS::Ref<NS::MachPort>& client) {
    if (const auto center = notificationCenter()) {
        center->postNotificationName_object(NS::str(kPortInvalidatedNotification),
                                            client->description());
    }
    if (const auto clients = ports()) {
        clients->removeObject(*client);
    }
}
