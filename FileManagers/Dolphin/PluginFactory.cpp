#include "FileManagers/Dolphin/PluginFactory.h"

#include "FileManagers/Dolphin/MenuPlugin.h"
#include "FileManagers/Dolphin/ViewPlugin.h"

namespace FileManagers {

PluginFactory::PluginFactory() {
    registerPlugin<MenuPlugin>();
    registerPlugin<ViewPlugin>();
}

} // namespace FileManagers
