#pragma once

#include "Platform/Foundation/Array.h"
#include "Platform/Foundation/Dictionary.h"
#include "Platform/Foundation/Invocation.h"
#include "Platform/Foundation/Property.h"
#include "Platform/Foundation/String.h"
#include "Platform/Ports/MachPort.h"

#include <string_view>

// One end of the link between the extension and the host application: a port with a name, and a
// handler for each action that this end cares about.
//
// A message names an action and carries archived objects; nothing is ever answered. Messages are
// delivered on the thread that created the endpoint, while it runs its run loop; everything else
// belongs to that thread too. What cannot be sent, or has no handler, is lost without notice.
class QVExtensionCommsComponent : public NS::MachPortDelegate {
    NS_OBJECT(QVExtensionCommsComponent)
  public:
    // Makes the port, registers it under the name and serves it in the current thread's run loop.
    // A name that is taken leaves the endpoint without one: it runs, but nobody finds it.
    explicit QVExtensionCommsComponent(const NS::Ref<NS::String>& name);
    // Gives the name up.
    ~QVExtensionCommsComponent() override;

    // Makes a selector of the target the handler of an action, in place of an earlier one. Its
    // first parameters receive what the action's parse routine hands over. The target is kept alive
    // as long as the handler stands. An action that the link does not know can be given a handler,
    // which is never called. Raises NSInvalidArgumentException when the target does not respond.
    void setTarget_selector_for(const NS::Ref<NS::Object>& target, NS::Selector selector,
                                const NS::Ref<NS::String>& action);

    // Sends an action with its payload, each element one keyed archive, to a port, with this
    // endpoint's own port to answer to. Never blocks and never tells of failure; a nil port is no
    // destination.
    void sendAction_data_to(const NS::Ref<NS::String>& action, const NS::Array& data,
                            const NS::RefPtr<NS::MachPort>& destination);

    // Takes a message in. Raises what decoding its payload and its handler raise.
    void handlePortMessage(const NS::Ref<NS::PortMessage>& message) override;

    // Parse routines: hand a message's payload to a handler. The first passes the reply port; the
    // second the first component's object and the reply port; the third each component's object,
    // and calls the handler also when there is none, with the arguments that it still holds.
    void parseExtensionAlive_invocation_senderPort(NS::RefPtr<NS::Array> payload,
                                                   NS::RefPtr<NS::Invocation> handler,
                                                   NS::RefPtr<NS::MachPort> senderPort);
    void parseObservingStatus_invocation_senderPort(NS::RefPtr<NS::Array> payload,
                                                    NS::RefPtr<NS::Invocation> handler,
                                                    NS::RefPtr<NS::MachPort> senderPort);
    void parseArchievedData_invocation_senderPort(NS::RefPtr<NS::Array> payload,
                                                  NS::RefPtr<NS::Invocation> handler,
                                                  NS::RefPtr<NS::MachPort> senderPort);

    // This endpoint's own port, and the name it is registered under.
    NS_PROPERTY(NS::MachPort, port, setPort)
    NS_PROPERTY(NS::String, portName, setPortName)
    // Handlers (Invocation) by action name.
    NS_PROPERTY(NS::MutableDictionary, actions, setActions)

  protected:
    // An action's name and its payload as the components of one message.
    static NS::Ref<NS::Array> componentsFor(const NS::String& action, const NS::Array& data);
    // The limit date of every message: one that has passed, since a send never waits. To make one
    // for each takes a tenth of the time of a small message.
    static const NS::Date& noWaiting();
};
