#pragma once

#include "FileManagers/Qt/SharedDrive.h"

#include <QApplication>
#include <QUrl>
#include <QWidget>
#include <set>

namespace FileManagers {

// The views of Dolphin's windows, each of which shows a folder, one or two to a tab. Tells the
// drive which folders can be seen.
//
// Nothing tells plug-ins of views. This goes by the name that their class has inside Dolphin, and
// by the lister in each, an object of a public class. Where they are built otherwise there are
// none.
class Views : public QObject {
  public:
    // Follows those that are there and those that come, until the application goes.
    explicit Views(QApplication* application);

    // The folder that a menu was opened in; empty when it is not known.
    static QUrl folderInFocus(QWidget* window);

  protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

  private:
    void follow(QWidget* view);
    void update(QWidget* view);

    std::shared_ptr<SharedDrive> shared_ = sharedDrive();
    std::set<QObject*> followed_;
};

} // namespace FileManagers
