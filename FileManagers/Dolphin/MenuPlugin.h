#pragma once

#include "FileManagers/Qt/SharedDrive.h"

#include <KAbstractFileItemActionPlugin>
#include <QMenu>
#include <QPointer>
#include <QVariantList>
#include <memory>

namespace FileManagers {

// What Dolphin, and other programs with KIO's menus, ask for the entries of a pop-up menu.
class MenuPlugin : public KAbstractFileItemActionPlugin {
    Q_OBJECT

  public:
    MenuPlugin(QObject* parent, const QVariantList& arguments);
    ~MenuPlugin() override;

    // The background of a folder comes as a selection of the folder itself. Since a view cannot
    // have the folder that it shows among its items, what is selected is the background when it is
    // that folder. The actions live until the next call.
    QList<QAction*> actions(const KFileItemListProperties& selection, QWidget* window) override;

  private:
    using SharedPlace = std::shared_ptr<const Shell::Place>;

    QList<QAction*> newActions(Shell::MenuKind kind, const SharedPlace& place);
    QList<QAction*> backgroundActions(const SharedPlace& place, QWidget* window);
    void pick(Shell::MenuKind kind, const Shell::MenuEntry& entry, const Shell::Place& place);

    std::shared_ptr<SharedDrive> shared_ = sharedDrive();
    std::unique_ptr<QObject> actions_; // whose children they are
    QPointer<QMenu> submenu_;          // which its window may have destroyed
};

} // namespace FileManagers
