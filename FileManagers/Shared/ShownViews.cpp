#include "FileManagers/Shared/ShownViews.h"

#include <utility>

namespace FileManagers {

void ShownViews::show(View view, const std::vector<std::string>& folders) {
    std::set<std::string> now(folders.begin(), folders.end());
    const std::set<std::string> before = std::exchange(shown_[view], now);
    for (const std::string& folder : now) {
        if (!before.contains(folder)) {
            (void)client_.beginObserving(folder); // kept also where nobody is told
        }
    }
    for (const std::string& folder : before) {
        if (!now.contains(folder)) {
            (void)client_.endObserving(folder);
        }
    }
    if (now.empty()) {
        shown_.erase(view);
    }
}

} // namespace FileManagers
