#include "FileManagers/Dolphin/ViewPlugin.h"

#include "FileManagers/Dolphin/DolphinViews.h"
#include "FileManagers/Qt/LocalPath.h"

#include <KCoreDirLister>
#include <QEvent>
#include <QGraphicsObject>
#include <QGraphicsScene>
#include <QGraphicsView>
#include <QTimer>
#include <string>
#include <vector>

namespace FileManagers {

namespace {

// The widget that an object which belongs to a graphics item is seen in.
QWidget* widgetOf(QObject* object) {
    while (object != nullptr && qobject_cast<QGraphicsObject*>(object) == nullptr) {
        object = object->parent();
    }
    auto* const item = qobject_cast<QGraphicsObject*>(object);
    if (item == nullptr || item->scene() == nullptr || item->scene()->views().isEmpty()) {
        return nullptr;
    }
    return item->scene()->views().constFirst();
}

} // namespace

ViewPlugin::ViewPlugin(QObject* parent, const QVariantList&) {
    setParent(parent);
    QTimer::singleShot(0, this, &ViewPlugin::findView);
}

ViewPlugin::~ViewPlugin() {
    shared_->drive.close(this);
}

QStringList ViewPlugin::getOverlays(const QUrl&) {
    return {};
}

void ViewPlugin::findView() {
    view_ = viewAround(widgetOf(parent()));
    KCoreDirLister* const lister = view_ != nullptr ? listerOf(view_) : nullptr;
    if (lister == nullptr) {
        return;
    }
    view_->installEventFilter(this);
    connect(lister, &KCoreDirLister::started, this, &ViewPlugin::update);
    update();
}

bool ViewPlugin::eventFilter(QObject*, QEvent* event) {
    if (event->type() == QEvent::Show || event->type() == QEvent::Hide) {
        QTimer::singleShot(0, this, &ViewPlugin::update); // when it is so
    }
    return false;
}

void ViewPlugin::update() {
    const KCoreDirLister* const lister =
        view_ != nullptr && view_->isVisible() ? listerOf(view_) : nullptr;
    const std::string folder = lister != nullptr ? localPath(lister->url()) : "";
    shared_->drive.show(this, folder.empty() ? std::vector<std::string>()
                                             : std::vector<std::string>{folder});
}

} // namespace FileManagers
