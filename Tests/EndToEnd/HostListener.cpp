#include "Tests/EndToEnd/HostListener.h"

#include "Platform/Ports/MachBootstrapServer.h"
#include "Platform/Ports/RunLoop.h"
#include "Tests/Support/Process.h"

namespace Tests {

bool hostIsUp() {
    return waitUntil([] {
        return static_cast<bool>(NS::MachBootstrapServer::sharedInstance()->portForName(
            *NS::str("com.Quorvane.QVExtensionCommsServer")));
    });
}

namespace {

constexpr NS::Method kMethods[] = {
    NS::method<&HostMessages::mounted>("mounted:"),
    NS::method<&HostMessages::informed>("informed:"),
};

} // namespace

constinit const NS::Class HostMessages::kClass{
    .name = "HostMessages", .superclass = &NS::Object::kClass, .methods = kMethods};

HostListener::HostListener() {
    client_->setTarget_selector_for(messages_, {"mounted:"}, NS::str("ext_init"));
    client_->setTarget_selector_for(messages_, {"informed:"}, NS::str("ext_bc_userinfo"));
    client_->init();
    client_->requestUserInfo();
}

HostListener::~HostListener() {
    NS::RunLoop::currentRunLoop()->removePort_forMode(NS::Ref<NS::MachPort>(*client_->port()),
                                                      NS::RunLoopMode::kDefault);
}

} // namespace Tests
