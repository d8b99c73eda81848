#pragma once

#include <QUrl>

class KCoreDirLister;
class QWidget;

namespace FileManagers {

// The views of Dolphin's windows, each of which shows a folder, one or two to a tab. Nothing tells
// plug-ins of them; this goes by the name that their class has inside Dolphin, and by the lister in
// each, which is an object of a public class. Where they are built otherwise there are no views.

// The view that a widget is in, or is; null when it is in none.
QWidget* viewAround(QWidget* widget);

// What lists the folder that a view shows; null when it has none.
KCoreDirLister* listerOf(QWidget* view);

// The folder that a menu was opened in; empty when it is not known.
QUrl folderInFocus(QWidget* window);

} // namespace FileManagers
