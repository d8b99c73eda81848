#include "Platform/Finder/FinderSync.h"

namespace FI {

constinit const NS::Class FinderSync::kClass{.name = "FIFinderSync",
                                             .superclass = &NS::Object::kClass};

void FinderSync::beginObservingDirectoryAtURL(const NS::Ref<NS::URL>&) {}
void FinderSync::endObservingDirectoryAtURL(const NS::Ref<NS::URL>&) {}
void FinderSync::requestBadgeIdentifierForURL(const NS::Ref<NS::URL>&) {}

NS::RefPtr<NS::Menu> FinderSync::menuForMenuKind(MenuKind) {
    return nullptr;
}
NS::RefPtr<NS::String> FinderSync::toolbarItemName() {
    return nullptr;
}
NS::RefPtr<NS::String> FinderSync::toolbarItemToolTip() {
    return nullptr;
}
NS::RefPtr<NS::Image> FinderSync::toolbarItemImage() {
    return nullptr;
}

} // namespace FI
