#include "FileManagers/Dolphin/Views.h"

#include "FileManagers/Qt/LocalPath.h"

#include <KCoreDirLister>
#include <QEvent>
#include <string>
#include <vector>

namespace FileManagers {

namespace {

bool isView(const QObject* object) {
    return object->isWidgetType() && object->inherits("DolphinView");
}

QUrl folderOf(const QWidget* view) {
    const auto* const lister = view->findChild<KCoreDirLister*>();
    return lister != nullptr ? lister->url() : QUrl();
}

std::vector<QWidget*> visibleViews(const QWidget* window) {
    std::vector<QWidget*> views;
    for (QWidget* const each : window->findChildren<QWidget*>()) {
        if (isView(each) && each->isVisible()) {
            views.push_back(each);
        }
    }
    return views;
}

} // namespace

Views::Views(QApplication* application) : QObject(application) {
    application->installEventFilter(this);
    for (QWidget* const each : QApplication::allWidgets()) {
        if (isView(each) && each->isVisible()) {
            follow(each);
        }
    }
}

// A click gives a view the keyboard; where none has it there may be just one.
QUrl Views::folderInFocus(QWidget* window) {
    QWidget* view = window->window()->focusWidget();
    while (view != nullptr && !isView(view)) {
        view = view->parentWidget();
    }
    if (view == nullptr) {
        const std::vector<QWidget*> views = visibleViews(window->window());
        view = views.size() == 1 ? views.front() : nullptr;
    }
    return view != nullptr ? folderOf(view) : QUrl();
}

bool Views::eventFilter(QObject* watched, QEvent* event) {
    const QEvent::Type type = event->type();
    if ((type == QEvent::Show || type == QEvent::Hide) && isView(watched)) {
        follow(static_cast<QWidget*>(watched));
    }
    return false;
}

void Views::follow(QWidget* view) {
    const auto later = [this, view] {
        update(view);
    };
    // What an event tells is so when it has been handled.
    QMetaObject::invokeMethod(view, later, Qt::QueuedConnection);
    const auto* const lister = view->findChild<KCoreDirLister*>();
    if (lister != nullptr && followed_.insert(view).second) {
        connect(lister, &KCoreDirLister::started, view, later);
        connect(view, &QObject::destroyed, this, [this](QObject* gone) {
            followed_.erase(gone);
            shared_->drive.close(gone);
        });
    }
}

void Views::update(QWidget* view) {
    const std::string folder = view->isVisible() ? localPath(folderOf(view)) : "";
    shared_->drive.show(view, folder.empty() ? std::vector<std::string>()
                                             : std::vector<std::string>{folder});
}

} // namespace FileManagers
