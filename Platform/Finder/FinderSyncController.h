#pragma once

#include "Platform/Finder/Selection.h"
#include "Platform/Foundation/Array.h"
#include "Platform/Foundation/Property.h"
#include "Platform/Foundation/Set.h"
#include "Platform/Foundation/URL.h"

namespace FI {

// What the file manager and the extension tell each other outside of callbacks. One per process.
//
// The extension sets the watched folders; whoever stands for the file manager sets what is selected
// and targeted before it calls the extension.
class FinderSyncController final : public NS::Object {
    NS_OBJECT(FinderSyncController)
  public:
    static NS::Ref<FinderSyncController> defaultController();

    // File URLs of the folders for which the extension is asked; nil until they are set.
    NS_PROPERTY(NS::Set, directoryURLs, setDirectoryURLs)
    // The selected items; nil is no selection.
    NS_PROPERTY(Selection, selection, setSelection)
    // The same as file URLs, in order.
    NS::RefPtr<NS::Array> selectedItemURLs() const;
    void setSelectedItemURLs(const NS::RefPtr<NS::Array>& urls);
    // File URL of the folder whose window or background is meant; nil when there is none.
    NS_PROPERTY(NS::URL, targetedURL, setTargetedURL)
};

} // namespace FI
