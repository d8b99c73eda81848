#pragma once

#include "Platform/Finder/FinderSync.h"
#include "Platform/Foundation/Property.h"

#include <functional>
#include <string>
#include <vector>

namespace Tests {

// An extension that writes down what is asked of it.
//
// Its menu is titled "Sample" and has the entries "First", "With Sender", "Off", which is disabled,
// and "Told", which is disabled and without an action. A selection that begins with kRaising has it
// raise NSRangeException.
class SampleExtension final : public FI::FinderSync {
    NS_OBJECT(SampleExtension)
  public:
    static constexpr const char* kRaising = "/raising";

    void beginObservingDirectoryAtURL(const NS::Ref<NS::URL>& url) override;
    void endObservingDirectoryAtURL(const NS::Ref<NS::URL>& url) override;
    void requestBadgeIdentifierForURL(const NS::Ref<NS::URL>& url) override;
    NS::RefPtr<NS::Menu> menuForMenuKind(FI::MenuKind kind) override;
    NS::RefPtr<NS::String> toolbarItemName() override;
    NS::RefPtr<NS::String> toolbarItemToolTip() override;
    NS::RefPtr<NS::Image> toolbarItemImage() override;

    // Actions.
    void first();
    void withSender(NS::RefPtr<NS::Object> sender);
    void off();

    // "menu 0 /a /b > /target", "first /a > none", "begin /a" and so on. Paths as the file system
    // has them.
    std::vector<std::string> calls;
    bool hasMenu = true;
    // Called as a menu is made.
    std::function<void()> onMenu;

    NS_PROPERTY(NS::String, toolTip, setToolTip)
    // What its menus depend on.
    NS_PROPERTY(NS::Object, record, setRecord)

  private:
    void note(const std::string& call);
};

} // namespace Tests
