#pragma once

#include <KPluginFactory>

namespace FileManagers {

// What Dolphin loads the plug-in by: it makes both kinds, as Dolphin asks for the one or the other.
class PluginFactory : public KPluginFactory {
    Q_OBJECT
    Q_PLUGIN_METADATA(IID KPluginFactory_iid FILE "quorvane-dolphin.json")
    Q_INTERFACES(KPluginFactory)

  public:
    PluginFactory();
};

} // namespace FileManagers
