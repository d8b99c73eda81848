#include "Platform/Ports/MachPort.h"

#include "Platform/Foundation/Format.h"
#include "Platform/Ports/linux/Endpoints.h"
#include "Platform/Ports/linux/Registration.h"

#include <cstring>

namespace NS {

constinit const Class MachPortDelegate::kClass{.name = "NSMachPortDelegate",
                                               .superclass = &Object::kClass};
constinit const Class MachPort::kClass{.name = "NSMachPort", .superclass = &Object::kClass};
constinit const Class PortMessage::kClass{.name = "NSPortMessage", .superclass = &Object::kClass};
constinit const Class RunLoopSource::kClass{.name = "NSRunLoopSource",
                                            .superclass = &Object::kClass};

PortMessage::PortMessage(RefPtr<MachPort> sendPort, Ref<Array> components)
    : sendPort_(std::move(sendPort)), components_(std::move(components)) {}

MachPort::MachPort(std::unique_ptr<Endpoint> endpoint) noexcept : endpoint_(std::move(endpoint)) {
    if (LocalEndpoint* const own = endpoint_->local()) {
        own->setPort(*this);
    }
}

MachPort::~MachPort() = default;

Ref<MachPort> MachPort::port() {
    return make<MachPort>(std::make_unique<LocalEndpoint>());
}

void MachPort::setDelegate(MachPortDelegate* delegate) noexcept {
    if (LocalEndpoint* const own = endpoint_->local()) {
        own->setDelegate(delegate);
    }
}

MachPortDelegate* MachPort::delegate() const noexcept {
    const LocalEndpoint* const own = endpoint_->local();
    return own == nullptr ? nullptr : own->delegate();
}

bool MachPort::sendBeforeDate_components_from_reserved(const Date&, const Array& components,
                                                       const RefPtr<MachPort>& from, std::size_t) {
    return endpoint_->send(components, from);
}

bool MachPort::isValid() const {
    return endpoint_->isValid();
}

bool MachPort::isEqual(const Object* other) const {
    const auto* const port = as<MachPort>(other);
    return port != nullptr && endpoint_->identity() == port->endpoint_->identity() &&
           endpoint_->process() == port->endpoint_->process();
}

std::size_t MachPort::hash() const {
    std::size_t value = 0; // the identity is random, so any part of it will do
    std::memcpy(&value, endpoint_->identity().bytes.data(), sizeof value);
    return value;
}

Ref<String> MachPort::description() const {
    const std::string identity = endpoint_->identity().hex().substr(0, 8);
    return stringWithFormat("<NSMachPort: %p> %s", static_cast<const void*>(this),
                            identity.c_str());
}

} // namespace NS
