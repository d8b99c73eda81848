#include "Platform/Finder/FinderSyncController.h"

namespace FI {

constinit const NS::Class FinderSyncController::kClass{.name = "FIFinderSyncController",
                                                       .superclass = &NS::Object::kClass};

NS::Ref<FinderSyncController> FinderSyncController::defaultController() {
    static const NS::Ref<FinderSyncController>& controller =
        *new NS::Ref<FinderSyncController>(NS::make<FinderSyncController>());
    return controller;
}

NS::RefPtr<NS::Array> FinderSyncController::selectedItemURLs() const {
    const auto items = selection();
    return items ? NS::RefPtr<NS::Array>(items->URLs()) : nullptr;
}

void FinderSyncController::setSelectedItemURLs(const NS::RefPtr<NS::Array>& urls) {
    setSelection(
        urls ? NS::RefPtr<Selection>(Selection::selectionWithURLs(NS::Ref<NS::Array>(*urls)))
             : nullptr);
}

} // namespace FI
