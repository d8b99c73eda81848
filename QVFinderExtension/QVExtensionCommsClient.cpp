#include "QVFinderExtension/QVExtensionCommsClient.h"

#include "Platform/Foundation/Clock.h"
#include "Platform/Foundation/KeyedArchiver.h"
#include "Platform/Foundation/Log.h"
#include "Platform/Foundation/ProcessInfo.h"
#include "Platform/Ports/MachBootstrapServer.h"
#include "Platform/Ports/RunLoop.h"
#include "QVFinderExtension/QVExtensionActions.h"

#include <cstdlib>

namespace {

constexpr double kServerTimeout = 120.0;
constexpr double kLookUpInterval = 1.0;

NS::Ref<NS::String> uniquePortName() {
    return NS::str(kClientPortNamePrefix)
        ->stringByAppendingString(*NS::ProcessInfo::processInfo()->globallyUniqueString());
}

} // namespace

constinit const NS::Class QVExtensionCommsClient::kClass{
    .name = "QVExtensionCommsClient", .superclass = &QVExtensionCommsComponent::kClass};

NS::Ref<QVExtensionCommsClient> QVExtensionCommsClient::new_() {
    const auto client = NS::make<QVExtensionCommsClient>();
    client->init();
    return client;
}

QVExtensionCommsClient::QVExtensionCommsClient() : QVExtensionCommsComponent(uniquePortName()) {}

void QVExtensionCommsClient::init() {
    waitForServerPortFor(kServerTimeout);
    NS::Log("client %@ connected to server port %@", port(), serverPort());
    alive();
}

void QVExtensionCommsClient::waitForServerPortFor(double timeout) {
    const double deadline = NS::absoluteTimeGetCurrent() + timeout;
    while (NS::absoluteTimeGetCurrent() < deadline) {
        setServerPort(
            NS::MachBootstrapServer::sharedInstance()->portForName(*NS::str(kServerPortName)));
        if (serverPort()) {
            break;
        }
        NS::sleepForTimeInterval(kLookUpInterval);
    }
    const NS::RefPtr<NS::MachPort> found = serverPort();
    if (!found) {
        std::exit(1);
    }
    NS::RunLoop::currentRunLoop()->addPort_forMode(NS::Ref<NS::MachPort>(*found),
                                                   NS::RunLoopMode::kDefault);
}

void QVExtensionCommsClient::sendRequest(std::string_view action) {
    sendAction_data_to(NS::str(action), *NS::make<NS::Array>(), serverPort());
}

void QVExtensionCommsClient::sendRequest(std::string_view action,
                                         const NS::RefPtr<NS::Object>& argument) {
    const auto archive = NS::KeyedArchiver::archivedDataWithRootObject(argument);
    sendAction_data_to(NS::str(action), *NS::Array::arrayWithObjects({archive}), serverPort());
}

void QVExtensionCommsClient::alive() {
    sendRequest(QVExtensionAction::kAlive);
}

void QVExtensionCommsClient::requestUserInfo() {
    sendRequest(QVExtensionAction::kRequestUserInfo);
}

void QVExtensionCommsClient::emptyTrash() {
    sendRequest(QVExtensionAction::kEmptyTrash);
}

void QVExtensionCommsClient::share(const NS::RefPtr<NS::Object>& path) {
    sendRequest(QVExtensionAction::kShare, path);
}

void QVExtensionCommsClient::showProps(const NS::RefPtr<NS::Object>& path) {
    sendRequest(QVExtensionAction::kShowProps, path);
}

void QVExtensionCommsClient::refreshFolder(const NS::RefPtr<NS::Object>& path) {
    sendRequest(QVExtensionAction::kRefreshFolder, path);
}

void QVExtensionCommsClient::beginObserving(const NS::RefPtr<NS::Object>& path) {
    sendRequest(QVExtensionAction::kBeginObserving, path);
}

void QVExtensionCommsClient::endObserving(const NS::RefPtr<NS::Object>& path) {
    sendRequest(QVExtensionAction::kEndObserving, path);
}

void QVExtensionCommsClient::moveToTrash(const NS::RefPtr<NS::Object>& paths) {
    sendRequest(QVExtensionAction::kMoveToTrash, paths);
}

void QVExtensionCommsClient::delete_(const NS::RefPtr<NS::Object>& paths) {
    sendRequest(QVExtensionAction::kTrashDelete, paths);
}

void QVExtensionCommsClient::restore(const NS::RefPtr<NS::Object>& paths) {
    sendRequest(QVExtensionAction::kTrashRestore, paths);
}
