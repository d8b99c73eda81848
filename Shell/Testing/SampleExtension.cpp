#include "Shell/Testing/SampleExtension.h"

#include "Platform/Finder/FinderSyncController.h"
#include "Platform/Foundation/Exception.h"

#include <cstdint>

namespace Tests {

namespace {

constexpr NS::Method kMethods[] = {
    NS::method<&SampleExtension::first>("first"),
    NS::method<&SampleExtension::withSender>("withSender:"),
    NS::method<&SampleExtension::off>("off"),
};

struct Entry {
    const char* title;
    const char* action;
    bool enabled;
};
constexpr Entry kEntries[] = {
    {"First",       "first",       true },
    {"With Sender", "withSender:", true },
    {"Off",         "off",         false},
    {"Told",        "",            false},
};

std::string pathOf(const NS::RefPtr<NS::URL>& url) {
    return url ? url->path()->fileSystemRepresentation() : "none";
}

// The place that the controller shows.
std::string place() {
    const auto controller = FI::FinderSyncController::defaultController();
    std::string text;
    if (const auto selection = controller->selectedItemURLs()) {
        for (const NS::Ref<NS::Object>& item : *selection) {
            text += " " + pathOf(NS::cast<NS::URL>(NS::RefPtr<NS::Object>(item)));
        }
    }
    return text + " > " + pathOf(controller->targetedURL());
}

} // namespace

constinit const NS::Class SampleExtension::kClass{
    .name = "SampleExtension", .superclass = &FI::FinderSync::kClass, .methods = kMethods};

void SampleExtension::beginObservingDirectoryAtURL(const NS::Ref<NS::URL>& url) {
    note("begin " + pathOf(url));
}

void SampleExtension::endObservingDirectoryAtURL(const NS::Ref<NS::URL>& url) {
    note("end " + pathOf(url));
}

void SampleExtension::requestBadgeIdentifierForURL(const NS::Ref<NS::URL>& url) {
    note("badge " + pathOf(url));
}

NS::RefPtr<NS::Menu> SampleExtension::menuForMenuKind(FI::MenuKind kind) {
    const std::string shown = place();
    note("menu " + std::to_string(static_cast<std::uint64_t>(kind)) + shown);
    if (onMenu) {
        onMenu();
    }
    if (shown.starts_with(std::string(" ") + kRaising)) {
        NS::Exception::raise(NS::kRangeException, "index 1 beyond bounds [0 .. 0]");
    }
    if (!hasMenu) {
        return nullptr;
    }
    const auto menu = NS::make<NS::Menu>(NS::str("Sample"));
    for (const Entry& entry : kEntries) {
        menu->addItemWithTitle_action_keyEquivalent(NS::str(entry.title), {entry.action},
                                                    NS::str(""))
            ->setEnabled(entry.enabled);
    }
    return menu;
}

NS::RefPtr<NS::String> SampleExtension::toolbarItemName() {
    return NS::str("Sample Drive");
}

NS::RefPtr<NS::String> SampleExtension::toolbarItemToolTip() {
    return toolTip();
}

NS::RefPtr<NS::Image> SampleExtension::toolbarItemImage() {
    return NS::make<NS::Image>(NS::str("SampleImage"), NS::str("/icons/Sample Image.svg"));
}

void SampleExtension::first() {
    note("first" + place());
}

void SampleExtension::withSender(NS::RefPtr<NS::Object> sender) {
    note("withSender " + NS::cast<NS::MenuItem>(sender)->title()->utf8() + place());
}

void SampleExtension::off() {
    note("off" + place());
}

void SampleExtension::note(const std::string& call) {
    calls.push_back(call);
}

} // namespace Tests
