#include "Programs/QuorvaneHost/HostApplication.h"

#include "Platform/Foundation/Data.h"
#include "Platform/Foundation/Exception.h"
#include "Platform/Foundation/KeyedArchiver.h"
#include "Platform/Foundation/Number.h"
#include "Platform/Ports/MachBootstrapServer.h"
#include "Programs/QuorvaneHost/HostData.h"
#include "Programs/QuorvaneHost/PayloadJson.h"
#include "QVApi/Content/QVUserInfoItem.h"
#include "QVFinderExtension/QVExtensionActions.h"

#include <algorithm>
#include <string_view>

namespace {

constexpr NS::Method kMethods[] = {
    NS::method<&HostApplication::clientAlive>("clientAlive:"),
    NS::method<&HostApplication::userInfoRequested>("userInfoRequested"),
    NS::method<&HostApplication::share>("share:"),
    NS::method<&HostApplication::showProps>("showProps:"),
    NS::method<&HostApplication::refreshFolder>("refreshFolder:"),
    NS::method<&HostApplication::moveToTrash>("moveToTrash:"),
    NS::method<&HostApplication::restore>("restore:"),
    NS::method<&HostApplication::remove>("remove:"),
    NS::method<&HostApplication::emptyTrash>("emptyTrash"),
    NS::method<&HostApplication::beginObserving>("beginObserving:client:"),
    NS::method<&HostApplication::endObserving>("endObserving:client:"),
    NS::method<&HostApplication::clientGone>("clientGone:"),
};

// What a request calls, and how many components it has beside the action.
struct Handler {
    std::string_view action;
    NS::Selector selector;
    std::size_t components;
};

constexpr Handler kHandlers[] = {
    {QVExtensionAction::kAlive,           {"clientAlive:"},           0},
    {QVExtensionAction::kRequestUserInfo, {"userInfoRequested"},      0},
    {QVExtensionAction::kShare,           {"share:"},                 1},
    {QVExtensionAction::kShowProps,       {"showProps:"},             1},
    {QVExtensionAction::kRefreshFolder,   {"refreshFolder:"},         1},
    {QVExtensionAction::kMoveToTrash,     {"moveToTrash:"},           1},
    {QVExtensionAction::kTrashRestore,    {"restore:"},               1},
    {QVExtensionAction::kTrashDelete,     {"remove:"},                1},
    {QVExtensionAction::kEmptyTrash,      {"emptyTrash"},             0},
    {QVExtensionAction::kBeginObserving,  {"beginObserving:client:"}, 1},
    {QVExtensionAction::kEndObserving,    {"endObserving:client:"},   1},
};

const Handler* handlerOf(const NS::PortMessage& message) {
    const auto action = NS::as<NS::Data>(message.components()->firstObject());
    const auto* const found =
        action ? std::ranges::find(kHandlers, NS::charactersOf(action->bytes()), &Handler::action)
               : std::end(kHandlers);
    return found == std::end(kHandlers) ? nullptr : found;
}

// How the host tells its clients apart.
std::string nameOf(const NS::RefPtr<NS::MachPort>& client) {
    return client ? client->description()->utf8() : std::string();
}

} // namespace

constinit const NS::Class HostApplication::kClass{
    .name = "HostApplication",
    .superclass = &NS::MachPortDelegate::kClass,
    .methods = kMethods,
};

HostApplication::HostApplication(DriveFolder drive, Account account, Journal& journal)
    : drive_(std::move(drive)), account_(std::move(account)), journal_(journal),
      requests_(drive_.path(), hostDataFolderFor(drive_.path()), journal) {}

HostApplication::~HostApplication() {
    if (server_) {
        server_->port()->setDelegate(nullptr);
        server_->notificationCenter()->removeObserver(*this);
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
    handleRequests();
    server_->port()->setDelegate(this);
    return true;
}

void HostApplication::handleRequests() {
    const NS::Ref<NS::Object> self(*this);
    for (const Handler& handler : kHandlers) {
        server_->setTarget_selector_for(self, handler.selector, NS::str(handler.action));
    }
    server_->notificationCenter()->addObserver_selector_name_object(
        self, {"clientGone:"}, NS::str(kPortInvalidatedNotification), nullptr);
}

void HostApplication::stop() {
    server_->broadcastShutdown();
}

void HostApplication::clientAlive(NS::RefPtr<NS::MachPort> client) {
    if (!client) {
        return; // nobody to keep, and nobody to answer; the journal has it
    }
    (void)server_->hasClients(); // drops those that are gone, and what is kept of them
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

void HostApplication::broadcastAccountIf(bool changed) {
    if (changed) {
        userInfoRequested();
    }
}

void HostApplication::share(NS::RefPtr<NS::Object> path) {
    requests_.share(path);
}

void HostApplication::showProps(NS::RefPtr<NS::Object> path) {
    requests_.showProps(path);
}

void HostApplication::refreshFolder(NS::RefPtr<NS::Object> path) {
    requests_.refreshFolder(path);
}

void HostApplication::moveToTrash(NS::RefPtr<NS::Object> paths) {
    broadcastAccountIf(requests_.moveToTrash(paths));
}

void HostApplication::restore(NS::RefPtr<NS::Object> paths) {
    broadcastAccountIf(requests_.restore(paths));
}

void HostApplication::remove(NS::RefPtr<NS::Object> paths) {
    broadcastAccountIf(requests_.remove(paths));
}

void HostApplication::emptyTrash() {
    broadcastAccountIf(requests_.emptyTrash());
}

void HostApplication::beginObserving(NS::RefPtr<NS::Object> path, NS::RefPtr<NS::MachPort> client) {
    // Of another the server would not tell when it is gone.
    if (!client || !server_->ports()->containsObject(*client)) {
        journal_.noteRefused(QVExtensionAction::kBeginObserving, jsonFromPayload(path),
                             "this client has not announced itself");
        journal_.flush();
        return;
    }
    requests_.beginObserving(path, nameOf(client));
}

void HostApplication::endObserving(NS::RefPtr<NS::Object> path, NS::RefPtr<NS::MachPort> client) {
    requests_.endObserving(path, nameOf(client));
}

void HostApplication::clientGone(NS::RefPtr<NS::Notification> notification) {
    requests_.clientGone(notification->object()->description()->utf8());
}

void HostApplication::handlePortMessage(const NS::Ref<NS::PortMessage>& message) {
    journal_.note(*message);
    const Handler* const handler = handlerOf(*message);
    if (handler == nullptr) {
        return;
    }
    // A handler keeps its last arguments: with a component missing it would do again what it did.
    if (message->components()->count() != handler->components + 1) {
        journal_.noteRefused(handler->action, nullptr, "not as many components as the action has");
        journal_.flush();
        return;
    }
    try {
        server_->handlePortMessage(message);
    } catch (const NS::Exception& exception) {
        journal_.noteRefused(handler->action, nullptr, exception.what());
        journal_.flush();
    }
}
