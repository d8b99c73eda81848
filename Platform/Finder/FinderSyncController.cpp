#include "Platform/Finder/FinderSyncController.h"

namespace FI {

constinit const NS::Class FinderSyncController::kClass{.name = "FIFinderSyncController",
                                                       .superclass = &NS::Object::kClass};

NS::Ref<FinderSyncController> FinderSyncController::defaultController() {
    static const NS::Ref<FinderSyncController>& controller =
        *new NS::Ref<FinderSyncController>(NS::make<FinderSyncController>());
    return controller;
}

} // namespace FI
