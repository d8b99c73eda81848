#include "FileManagers/Dolphin/PluginFactory.h"

#include "FileManagers/Dolphin/MenuPlugin.h"
#include "FileManagers/Dolphin/Views.h"

#include <QApplication>

namespace FileManagers {

PluginFactory::PluginFactory() {
    registerPlugin<MenuPlugin>();
    new Views(qApp);
}

} // namespace FileManagers
