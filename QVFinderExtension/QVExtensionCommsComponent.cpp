#include "QVFinderExtension/QVExtensionCommsComponent.h"

#include "Platform/Foundation/Data.h"
#include "Platform/Foundation/KeyedUnarchiver.h"
#include "Platform/Ports/MachBootstrapServer.h"
#include "Platform/Ports/RunLoop.h"
#include "QVFinderExtension/QVExtensionActions.h"

#include <algorithm>
#include <array>
#include <iterator>

namespace {

constexpr std::size_t kFirstParameter = NS::MethodSignature::kFirstParameter;

constexpr NS::Method kMethods[] = {
    NS::method<&QVExtensionCommsComponent::parseExtensionAlive_invocation_senderPort>(
        "parseExtensionAlive:invocation:senderPort:"),
    NS::method<&QVExtensionCommsComponent::parseObservingStatus_invocation_senderPort>(
        "parseObservingStatus:invocation:senderPort:"),
    NS::method<&QVExtensionCommsComponent::parseArchievedData_invocation_senderPort>(
        "parseArchievedData:invocation:senderPort:"),
};

// A message's first component as text; nil when there is none or it is not UTF-8.
NS::RefPtr<NS::String> actionOf(const NS::PortMessage& message) {
    const auto name = NS::as<NS::Data>(message.components()->firstObject());
    return name ? NS::String::fromUtf8(NS::charactersOf(name->bytes())) : nullptr;
}

NS::Ref<NS::Array> payloadOf(const NS::PortMessage& message) {
    const NS::Array& components = message.components();
    return NS::make<NS::Array>(
        std::vector<NS::Ref<NS::Object>>(std::next(components.begin()), components.end()));
}

const QVExtensionParseRoutine* parseRoutineFor(const NS::String& action) {
    const auto* const found =
        std::ranges::find(kParseRoutines, action.ascii(), &QVExtensionParseRoutine::action);
    return found == std::end(kParseRoutines) ? nullptr : found;
}

NS::RefPtr<NS::Object> unarchived(const NS::Ref<NS::Object>& component) {
    return NS::KeyedUnarchiver::unarchiveObjectWithData(*NS::cast<NS::Data>(component));
}

// A call of an object's own operation, ready for its arguments.
NS::Ref<NS::Invocation> callRecord(NS::Object& target, NS::Selector selector) {
    const auto call =
        NS::make<NS::Invocation>(NS::MethodSignature::signatureForSelector(target, selector));
    call->setTarget(NS::RefPtr<NS::Object>(&target));
    call->setSelector(selector);
    return call;
}

} // namespace

constinit const NS::Class QVExtensionCommsComponent::kClass{
    .name = "QVExtensionCommsComponent",
    .superclass = &NS::MachPortDelegate::kClass,
    .methods = kMethods,
};

QVExtensionCommsComponent::QVExtensionCommsComponent(const NS::Ref<NS::String>& name) {
    setActions(NS::make<NS::MutableDictionary>());
    setPortName(name);
    const NS::Ref<NS::MachPort> own = NS::MachPort::port();
    setPort(own);
    own->setDelegate(this);
    (void)NS::MachBootstrapServer::sharedInstance()->registerPort_name(own, *name);
    NS::RunLoop::currentRunLoop()->addPort_forMode(own, NS::RunLoopMode::kDefault);
}

QVExtensionCommsComponent::~QVExtensionCommsComponent() {
    if (const auto name = portName()) {
        (void)NS::MachBootstrapServer::sharedInstance()->removePortForName(*name);
    }
    if (const auto own = port()) {
        own->setDelegate(nullptr);
    }
}

void QVExtensionCommsComponent::setTarget_selector_for(const NS::Ref<NS::Object>& target,
                                                       NS::Selector selector,
                                                       const NS::Ref<NS::String>& action) {
    const NS::Ref<NS::Invocation> handler = callRecord(*target, selector);
    if (const auto handlers = actions()) {
        handlers->setObject_forKey(handler, action);
    }
}

NS::Ref<NS::Array> QVExtensionCommsComponent::componentsFor(const NS::String& action,
                                                            const NS::Array& data) {
    std::vector<NS::Ref<NS::Object>> components;
    components.reserve(1 + data.count());
    components.push_back(NS::Data::dataWithBytes(
        NS::bytesOf(action.isAscii() ? action.ascii() : std::string_view(action.utf8()))));
    components.insert(components.end(), data.begin(), data.end());
    return NS::make<NS::Array>(std::move(components));
}

const NS::Date& QVExtensionCommsComponent::noWaiting() {
    static const NS::Date& date = *NS::RefPtr<NS::Date>(NS::make<NS::Date>(0)).leak();
    return date;
}

void QVExtensionCommsComponent::sendAction_data_to(const NS::Ref<NS::String>& action,
                                                   const NS::Array& data,
                                                   const NS::RefPtr<NS::MachPort>& destination) {
    if (destination) {
        (void)destination->sendBeforeDate_components_from_reserved(
            noWaiting(), *componentsFor(action, data), port(), 0);
    }
}

void QVExtensionCommsComponent::handlePortMessage(const NS::Ref<NS::PortMessage>& message) {
    const NS::RefPtr<NS::String> action = actionOf(message);
    const auto* const entry = action ? parseRoutineFor(*action) : nullptr;
    if (entry == nullptr) {
        return;
    }
    const auto handlers = actions();
    const auto handler =
        handlers ? NS::cast<NS::Invocation>(handlers->objectForKey(*action)) : nullptr;
    if (!handler) {
        return;
    }
    const std::array<NS::RefPtr<NS::Object>, 3> arguments{payloadOf(message), handler,
                                                          message->sendPort()};
    methodForSelector(entry->routine)->invoke(*this, arguments);
}

void QVExtensionCommsComponent::parseExtensionAlive_invocation_senderPort(
    NS::RefPtr<NS::Array>, NS::RefPtr<NS::Invocation> handler,
    NS::RefPtr<NS::MachPort> senderPort) {
    handler->setArgument_atIndex(senderPort, kFirstParameter);
    handler->invoke();
}

void QVExtensionCommsComponent::parseObservingStatus_invocation_senderPort(
    NS::RefPtr<NS::Array> payload, NS::RefPtr<NS::Invocation> handler,
    NS::RefPtr<NS::MachPort> senderPort) {
    handler->setArgument_atIndex(unarchived(payload->objectAtIndex(0)), kFirstParameter);
    handler->setArgument_atIndex(senderPort, kFirstParameter + 1);
    handler->invoke();
}

void QVExtensionCommsComponent::parseArchievedData_invocation_senderPort(
    NS::RefPtr<NS::Array> payload, NS::RefPtr<NS::Invocation> handler, NS::RefPtr<NS::MachPort>) {
    for (std::size_t i = 0; i < payload->count(); ++i) {
        handler->setArgument_atIndex(unarchived(payload->objectAtIndex(i)), kFirstParameter + i);
    }
    handler->invoke();
}
