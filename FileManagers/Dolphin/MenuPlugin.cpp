#include "FileManagers/Dolphin/MenuPlugin.h"

#include "FileManagers/Dolphin/Views.h"
#include "FileManagers/Qt/LocalPath.h"

#include <KFileItemListProperties>
#include <QAction>
#include <QIcon>
#include <string>
#include <utility>

namespace FileManagers {

using Shell::MenuEntry;
using Shell::MenuKind;
using Shell::Place;

namespace {

QString label(const std::string& title) {
    return QString::fromStdString(withoutMnemonics(title, '&'));
}

std::string folderOf(const std::string& path) {
    const auto slash = path.rfind('/');
    return slash == 0 ? "/" : path.substr(0, slash == std::string::npos ? 0 : slash);
}

// A file that is not of this machine is in it without a path, so that there is no menu.
Place placeOf(const QList<QUrl>& selection) {
    Place place;
    for (const QUrl& url : selection) {
        place.items.push_back(localPath(url));
    }
    place.target = place.items.empty() ? "" : folderOf(place.items.front());
    return place;
}

bool isBackground(const Place& place, QWidget* window) {
    return window != nullptr && place.items.size() == 1 &&
           place.items.front() == localPath(Views::folderInFocus(window));
}

} // namespace

MenuPlugin::MenuPlugin(QObject* parent, const QVariantList&)
    : KAbstractFileItemActionPlugin(parent) {}

MenuPlugin::~MenuPlugin() {
    delete submenu_;
}

QList<QAction*> MenuPlugin::actions(const KFileItemListProperties& selection, QWidget* window) {
    delete submenu_;
    actions_ = std::make_unique<QObject>();
    Place place = placeOf(selection.urlList());
    if (isBackground(place, window)) {
        return backgroundActions(std::make_shared<const Place>(Place{{}, place.items.front()}),
                                 window);
    }
    return newActions(MenuKind::kItems, std::make_shared<const Place>(std::move(place)));
}

QList<QAction*> MenuPlugin::newActions(MenuKind kind, const SharedPlace& place) {
    QList<QAction*> actions;
    for (const MenuEntry& entry : shared_->drive.entries(kind, *place)) {
        auto* const action = new QAction(label(entry.title), actions_.get());
        action->setEnabled(entry.enabled);
        connect(action, &QAction::triggered, this,
                [this, kind, entry, place] { pick(kind, entry, *place); });
        actions.append(action);
    }
    return actions;
}

QList<QAction*> MenuPlugin::backgroundActions(const SharedPlace& place, QWidget* window) {
    QList<QAction*> actions = newActions(MenuKind::kContainer, place);
    const QList<QAction*> toolbarActions = newActions(MenuKind::kToolbar, place);
    if (!toolbarActions.isEmpty()) {
        const Shell::ToolbarItem& shown = shared_->drive.toolbarItem();
        submenu_ = new QMenu(label(shown.name), window);
        submenu_->setIcon(QIcon::fromTheme(QString::fromStdString(shown.imageName),
                                           QIcon(QString::fromStdString(shown.imageFile))));
        submenu_->menuAction()->setToolTip(QString::fromStdString(shown.toolTip));
        submenu_->addActions(toolbarActions);
        actions.append(submenu_->menuAction());
    }
    return actions;
}

void MenuPlugin::pick(MenuKind kind, const MenuEntry& entry, const Place& place) {
    // What is told is told to the window whose menu it was, before pick() comes back.
    shared_->drive.setOnNotDone([this](const NotDone& notDone) {
        Q_EMIT error(QString::fromStdString(notDone.what + ". " + notDone.why));
    });
    shared_->drive.pick(kind, entry, place);
    shared_->drive.setOnNotDone({});
}

} // namespace FileManagers
