#include "Platform/Finder/Menu.h"

namespace NS {

constinit const Class Menu::kClass{.name = "NSMenu", .superclass = &Object::kClass};

Ref<MenuItem> Menu::addItemWithTitle_action_keyEquivalent(Ref<String> title, Selector action,
                                                          Ref<String> keyEquivalent) {
    items_.push_back(make<MenuItem>(std::move(title), action, std::move(keyEquivalent)));
    return items_.back();
}

} // namespace NS
