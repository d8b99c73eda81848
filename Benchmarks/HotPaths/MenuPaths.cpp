// What a file manager's click brings about, and the lines that it leaves.

#include "Benchmarks/HotPaths/HotPaths.h"
#include "CustomConsoleLogging/consoleLogging.h"
#include "Platform/Finder/FinderSyncController.h"
#include "Platform/Foundation/Exception.h"
#include "QVFinderExtension/FinderSync.h"

#include <string>
#include <vector>

namespace HotPaths {

namespace {

constexpr int kItems = 1000;
constexpr int kLines = 100;

NS::Ref<NS::Array> selection() {
    std::vector<NS::Ref<NS::Object>> items;
    for (int i = 0; i < kItems; ++i) {
        items.push_back(NS::URL::fileURLWithPath(
            NS::str("/drive/Documents/Holiday pictures/Picture " + std::to_string(i) + ".jpeg")));
    }
    return NS::make<NS::Array>(std::move(items));
}

void countMenu() {
    const auto extension = NS::make<FinderSync>();
    extension->setDrivePath(NS::str("/drive"));
    FI::FinderSyncController::defaultController()->setSelectedItemURLs(selection());
    count("menu-items", [&] {
        if (extension->menuForMenuKind(FI::MenuKind::kContextualMenuForItems) == nullptr) {
            NS::Exception::raise(NS::kGenericException, "there is no menu");
        }
    });
    FI::FinderSyncController::defaultController()->setSelectedItemURLs(nullptr);
}

void countLogLine() {
    QVLogging::setupWithPrefix(NS::str("HP"));
    const auto path = NS::str("/Documents/Holiday pictures/Picture 17.jpeg");
    count("log-line", [&] {
        for (int i = 0; i < kLines; ++i) {
            _Log("DEBUG ", LogOrigin::here("countLogLine"), "received init at %@", path);
        }
    });
}

} // namespace

void countMenus() {
    countMenu();
    countLogLine();
}

} // namespace HotPaths
