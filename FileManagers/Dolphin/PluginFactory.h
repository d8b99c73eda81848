#pragma once

#include <KPluginFactory>

namespace FileManagers {

// What a program finds in the library as it loads it: makes a plug-in for its menus, and follows
// its views from then on.
class PluginFactory : public KPluginFactory {
    Q_OBJECT
    Q_PLUGIN_METADATA(IID KPluginFactory_iid FILE "quorvane-dolphin.json")
    Q_INTERFACES(KPluginFactory)

  public:
    PluginFactory();
};

} // namespace FileManagers
