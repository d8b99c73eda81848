#include "FileManagers/Dolphin/DolphinViews.h"

#include <KCoreDirLister>
#include <QWidget>

namespace FileManagers {

namespace {

constexpr const char* kViewClass = "DolphinView";

// The one with the keyboard, which a click gives it; else the only one.
QWidget* viewInFocus(QWidget* window) {
    QWidget* const focused = viewAround(window->focusWidget());
    if (focused != nullptr) {
        return focused;
    }
    QWidget* only = nullptr;
    for (QWidget* const each : window->findChildren<QWidget*>()) {
        if (each->inherits(kViewClass) && each->isVisible()) {
            if (only != nullptr) {
                return nullptr;
            }
            only = each;
        }
    }
    return only;
}

} // namespace

QWidget* viewAround(QWidget* widget) {
    while (widget != nullptr && !widget->inherits(kViewClass)) {
        widget = widget->parentWidget();
    }
    return widget;
}

KCoreDirLister* listerOf(QWidget* view) {
    return view->findChild<KCoreDirLister*>();
}

QUrl folderInFocus(QWidget* window) {
    QWidget* const view = window != nullptr ? viewInFocus(window->window()) : nullptr;
    const KCoreDirLister* const lister = view != nullptr ? listerOf(view) : nullptr;
    return lister != nullptr ? lister->url() : QUrl();
}

} // namespace FileManagers
