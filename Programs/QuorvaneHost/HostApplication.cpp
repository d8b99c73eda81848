#include "Programs/QuorvaneHost/HostApplication.h"

#include "Platform/Foundation/KeyedArchiver.h"
#include "Platform/Foundation/Number.h"
#include "Platform/Ports/MachBootstrapServer.h"
#include "QVApi/Content/QVUserInfoItem.h"
#include "QVFinderExtension/QVExtensionActions.h"

namespace {

constexpr NS::Selector kClientAlive{"clientAlive:"};
constexpr NS::Selector kUserInfoRequested{"userInfoRequested"};

constexpr NS::Method kMethods[] = {
    NS::method<&HostApplication::clientAlive>("clientAlive:"),
    NS::method<&HostApplication::userInfoRequested>("userInfoRequested"),
};

} // namespace

constinit const NS::Class HostApplication::kClass{
    .name = "HostApplication",
    .superclass = &NS::MachPortDelegate::kClass,
    .methods = kMethods,
};

HostApplication::HostApplication(DriveFolder drive, Account account, Journal& journal)
    : drive_(std::move(drive)), account_(std::move(account)), journal_(journal) {}

HostApplication::~HostApplication() {
    if (server_) {
        server_->port()->setDelegate(nullptr);
    }
}

bool HostApplication::start() {
    const auto names = NS::MachBootstrapServer::sharedInstance();
    if (names->portForName(*NS::str(kServerPortName))) {
        return false;
    }
    server_ = QVExtensionCommsServer::defaultServer();
    // Two hosts may have started at once; the one that did not get the name would never be found.
    const auto found = names->portForName(*NS::str(kServerPortName));
    if (!found || !found->isEqual(server_->port().get())) {
        return false;
    }
    const NS::Ref<NS::Object> self(*this);
    server_->setTarget_selector_for(self, kClientAlive, NS::str(QVExtensionAction::kAlive));
    server_->setTarget_selector_for(self, kUserInfoRequested,
                                    NS::str(QVExtensionAction::kRequestUserInfo));
    server_->port()->setDelegate(this);
    return true;
}

void HostApplication::stop() {
    server_->broadcastShutdown();
}

void HostApplication::clientAlive(NS::RefPtr<NS::MachPort> client) {
    if (!client) {
        return; // nobody to keep, and nobody to answer; the journal has it
    }
    server_->extensionAlive(client);
    const auto path = NS::KeyedArchiver::archivedDataWithRootObject(
        NS::String::fromFileSystemRepresentation(drive_.path()));
    server_->sendAction_data_to(NS::str(QVExtensionAction::kInit),
                                *NS::Array::arrayWithObjects({path}), client);
}

void HostApplication::userInfoRequested() {
    const auto info = NS::make<QVUserInfoItem>();
    info->setPlan(NS::String::fromFileSystemRepresentation(account_.plan));
    info->setStorageMax(NS::Number::numberWithLongLong(account_.quotaMebibytes));
    info->setStorageUsed(NS::Number::numberWithLongLong(drive_.bytesUsed()));
    info->setBandwidthUsed(NS::Number::numberWithLongLong(0));
    info->setBandwidthMax(NS::Number::numberWithLongLong(0));
    info->setTrashCount(NS::Number::numberWithLongLong(drive_.trashCount()));
    server_->broadcastUserInfo(info);
}

void HostApplication::handlePortMessage(const NS::Ref<NS::PortMessage>& message) {
    journal_.note(*message);
    server_->handlePortMessage(message);
}
