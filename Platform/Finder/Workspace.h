#pragma once

#include "Platform/Foundation/Object.h"
#include "Platform/Foundation/String.h"

namespace NS {

// The desktop that the user works on.
class Workspace final : public Object {
    NS_OBJECT(Workspace)
  public:
    static Ref<Workspace> sharedWorkspace();

    // Has the desktop open a file or a folder with the program that the user has chosen for it.
    // Returns at once; false for nil and when the opener cannot be started. That the opener then
    // fails is not learned. Any thread.
    bool openFile(const RefPtr<String>& path);
};

} // namespace NS
