// What a file manager's click brings about, and the lines that it leaves.

#include "Benchmarks/HotPaths/HotPaths.h"
#include "CustomConsoleLogging/consoleLogging.h"
#include "Platform/Finder/FinderSyncController.h"
#include "Platform/Foundation/Exception.h"
#include "QVFinderExtension/FinderSync.h"

#include <string>

namespace HotPaths {

namespace {

constexpr int kItems = 1000;
constexpr int kLines = 100;

// The paths of a selection as they come from a file manager.
NS::Ref<NS::Data> selectedPaths() {
    std::string paths;
    for (int i = 0; i < kItems; ++i) {
        paths += "/drive/Documents/Holiday pictures/Picture " + std::to_string(i) + ".jpeg";
        paths.push_back('\0');
    }
    return NS::Data::dataWithBytes(NS::bytesOf(paths));
}

void countMenu() {
    const auto extension = NS::make<FinderSync>();
    extension->setDrivePath(NS::str("/drive"));
    const auto controller = FI::FinderSyncController::defaultController();
    const auto paths = selectedPaths();
    count("menu-items", [&] {
        controller->setSelection(FI::Selection::selectionWithPaths(paths));
        if (extension->menuForMenuKind(FI::MenuKind::kContextualMenuForItems) == nullptr) {
            NS::Exception::raise(NS::kGenericException, "there is no menu");
        }
    });
    controller->setSelection(nullptr);
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
