#include "Programs/QuorvaneHost/DriveRequests.h"

#include "Platform/Foundation/Array.h"
#include "Platform/Foundation/String.h"
#include "Programs/QuorvaneHost/HostData.h"
#include "Programs/QuorvaneHost/ItemProperties.h"
#include "Programs/QuorvaneHost/PayloadJson.h"
#include "QVFinderExtension/QVExtensionActions.h"

#include <algorithm>
#include <iterator>
#include <unistd.h>
#include <utility>
#include <vector>

using Json = nlohmann::ordered_json;

namespace {

std::string pathFrom(const NS::RefPtr<NS::Object>& argument) {
    if (!argument) {
        throw Refusal("no path was sent");
    }
    const auto path = NS::as<NS::String>(argument);
    if (!path) {
        throw Refusal("what was sent is no path");
    }
    return path->fileSystemRepresentation();
}

Json jsonPath(const std::string& path) {
    return jsonFromPayload(NS::String::fromFileSystemRepresentation(path));
}

} // namespace

DriveRequests::DriveRequests(const std::string& drivePath, const std::string& dataFolder,
                             Journal& journal)
    : journal_(journal), lock_(lockHostData(dataFolder)), tree_(drivePath),
      trash_(tree_, dataFolder + "/trash.log"), links_(dataFolder + "/Links") {}

template <class Do>
void DriveRequests::onItem(std::string_view action, const NS::RefPtr<NS::Object>& path,
                           Do&& perform) {
    try {
        const std::string bytes = pathFrom(path);
        journal_.noteDone(action, jsonPath(bytes), perform(bytes));
    } catch (const Refusal& refusal) {
        journal_.noteRefused(action, jsonFromPayload(path), refusal.what());
    }
    journal_.flush();
}

void DriveRequests::share(const NS::RefPtr<NS::Object>& path) {
    onItem(QVExtensionAction::kShare, path, [&](const std::string& bytes) {
        const DriveEntry entry = tree_.entryAt(bytes);
        if (!existsIn(entry.folder.get(), entry.name)) {
            throw Refusal("there is no such item");
        }
        const ShareLinks::Link link = links_.linkTo(entry.path);
        return Json{
            {"link", link.url           },
            {"file", jsonPath(link.file)}
        };
    });
}

void DriveRequests::showProps(const NS::RefPtr<NS::Object>& path) {
    onItem(QVExtensionAction::kShowProps, path,
           [&](const std::string& bytes) { return propertiesOf(tree_.entryAt(bytes)); });
}

void DriveRequests::refreshFolder(const NS::RefPtr<NS::Object>& path) {
    onItem(QVExtensionAction::kRefreshFolder, path, [&](const std::string& bytes) {
        return Json{
            {"entries", entriesIn(tree_.folderAt(bytes).get()).size()}
        };
    });
}

template <class Do>
bool DriveRequests::onItems(std::string_view action, const NS::RefPtr<NS::Object>& paths,
                            Do&& perform) {
    bool changed = false;
    try {
        changed = note(action, perform(pathsFrom(action, paths)));
    } catch (const Refusal& refusal) {
        journal_.noteRefused(action, jsonFromPayload(paths), refusal.what());
    }
    journal_.flush();
    return changed;
}

std::vector<std::string> DriveRequests::pathsFrom(std::string_view action,
                                                  const NS::RefPtr<NS::Object>& paths) {
    const auto array = NS::as<NS::Array>(paths);
    if (!array) {
        throw Refusal("what was sent is no list of paths");
    }
    std::vector<std::string> items;
    for (const NS::Ref<NS::Object>& element : *array) {
        try {
            items.push_back(pathFrom(element));
        } catch (const Refusal& refusal) {
            journal_.noteRefused(action, jsonFromPayload(element), refusal.what());
        }
    }
    return items;
}

bool DriveRequests::note(std::string_view action, const Trash::Results& results) {
    bool changed = false;
    for (const Trash::Result& result : results) {
        if (!result.reason.empty()) {
            journal_.noteRefused(action, jsonPath(result.path), result.reason);
            continue;
        }
        changed = true;
        journal_.noteDone(action, jsonPath(result.path),
                          result.to.empty() ? Json::object()
                                            : Json{
                                                  {"to", jsonPath(result.to)}
        });
    }
    return changed;
}

bool DriveRequests::moveToTrash(const NS::RefPtr<NS::Object>& paths) {
    return onItems(QVExtensionAction::kMoveToTrash, paths,
                   [&](const auto& items) { return trash_.moveIn(items); });
}

bool DriveRequests::restore(const NS::RefPtr<NS::Object>& paths) {
    return onItems(QVExtensionAction::kTrashRestore, paths,
                   [&](const auto& items) { return trash_.restore(items); });
}

bool DriveRequests::remove(const NS::RefPtr<NS::Object>& paths) {
    return onItems(QVExtensionAction::kTrashDelete, paths,
                   [&](const auto& items) { return trash_.remove(items); });
}

bool DriveRequests::emptyTrash() {
    bool changed = false;
    try {
        changed = note(QVExtensionAction::kEmptyTrash, trash_.empty());
    } catch (const Refusal& refusal) {
        journal_.noteRefused(QVExtensionAction::kEmptyTrash, Json(), refusal.what());
    }
    journal_.flush();
    return changed;
}

void DriveRequests::beginObserving(const NS::RefPtr<NS::Object>& path, const std::string& client) {
    onItem(QVExtensionAction::kBeginObserving, path, [&](const std::string& bytes) {
        (void)tree_.folderAt(bytes);
        if (!observed_.begin(client, bytes)) {
            throw Refusal("this client shows as many folders as one may");
        }
        return observedJson(client);
    });
}

// The folder may be gone by now: it is known by what the client called it.
void DriveRequests::endObserving(const NS::RefPtr<NS::Object>& path, const std::string& client) {
    onItem(QVExtensionAction::kEndObserving, path, [&](const std::string& bytes) {
        if (!observed_.end(client, bytes)) {
            throw Refusal("this client does not show it");
        }
        return observedJson(client);
    });
}

Json DriveRequests::observedJson(const std::string& client) const {
    Json folders = Json::array();
    for (const std::string& folder : observed_.foldersOf(client)) {
        folders.push_back(jsonPath(folder));
    }
    return {
        {"client",   client            },
        {"observed", std::move(folders)}
    };
}

void DriveRequests::clientGone(const std::string& client) {
    if (!observed_.foldersOf(client).empty()) {
        journal_.noteGone(client, observedJson(client)["observed"]);
        journal_.flush();
    }
    observed_.forget(client);
}
