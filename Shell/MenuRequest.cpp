#include "Shell/MenuRequest.h"

#include "Platform/Finder/FinderSyncController.h"

namespace Shell {

namespace {

// The controller shows a selection and a target for as long as this lives.
class ShownPlace {
  public:
    explicit ShownPlace(const MenuRequest& request)
        : selection_(controller_->selection()), target_(controller_->targetedURL()) {
        controller_->setSelection(request.selection);
        controller_->setTargetedURL(request.target);
    }
    ~ShownPlace() {
        controller_->setSelection(selection_);
        controller_->setTargetedURL(target_);
    }
    ShownPlace(const ShownPlace&) = delete;
    ShownPlace& operator=(const ShownPlace&) = delete;

  private:
    NS::Ref<FI::FinderSyncController> controller_ = FI::FinderSyncController::defaultController();
    NS::RefPtr<FI::Selection> selection_;
    NS::RefPtr<NS::URL> target_;
};

NS::RefPtr<NS::MenuItem> enabledEntry(const NS::Menu& menu, std::string_view action) {
    for (const NS::Ref<NS::MenuItem>& entry : menu.itemArray()) {
        if (entry->isEnabled() && entry->action().name == action) {
            return entry;
        }
    }
    return nullptr;
}

} // namespace

NS::RefPtr<NS::Menu> menuForRequest(FI::FinderSync& extension, const MenuRequest& request) {
    const ShownPlace shown(request);
    return extension.menuForMenuKind(request.kind);
}

RunResult runEntryOfMenu(FI::FinderSync& extension, const MenuRequest& request,
                         std::string_view action, const std::function<bool()>& isTooLate) {
    const ShownPlace shown(request);
    const auto menu = extension.menuForMenuKind(request.kind);
    // An entry without an action only tells something.
    const auto entry = menu && !action.empty() ? enabledEntry(*menu, action) : nullptr;
    if (!entry) {
        return RunResult::kNotInMenu;
    }
    if (isTooLate()) {
        return RunResult::kTooLate;
    }
    entry->sendAction(extension);
    return RunResult::kDone;
}

} // namespace Shell
