#include "FileManagers/GLib/ProviderObject.h"

#include "FileManagers/GLib/ChangeNotice.h"
#include "FileManagers/GLib/DriveLoop.h"

#include <new>

namespace FileManagers {

namespace {

struct Provider {
    GObject parent;
    // Made and destroyed by the type system's calls below.
    Drive drive;
    DriveLoop loop;
    ChangeNotice notice;
};

struct ProviderClass {
    GObjectClass parent;
    const ProviderCallbacks* callbacks;
};

void construct(GTypeInstance* instance, gpointer type) {
    auto* const provider = reinterpret_cast<Provider*>(instance);
    const ProviderCallbacks* const callbacks = static_cast<ProviderClass*>(type)->callbacks;
    Drive& drive = *new (&provider->drive) Drive;
    new (&provider->loop) DriveLoop(drive);
    drive.setOnNotDone(callbacks->onNotDone);
    new (&provider->notice) ChangeNotice([provider, callbacks] { callbacks->onChange(provider); });
    drive.setOnChange([provider] { provider->notice.note(); });
}

void finalize(GObject* object) {
    auto* const provider = reinterpret_cast<Provider*>(object);
    provider->notice.~ChangeNotice();
    provider->loop.~DriveLoop();
    provider->drive.~Drive();
    G_OBJECT_CLASS(g_type_class_peek(G_TYPE_OBJECT))->finalize(object);
}

void initClass(gpointer type, gpointer callbacks) {
    auto* const provider = static_cast<ProviderClass*>(type);
    provider->parent.finalize = &finalize;
    provider->callbacks = static_cast<const ProviderCallbacks*>(callbacks);
}

} // namespace

GType registerProviderType(GTypeModule* module, const char* name,
                           const ProviderCallbacks* callbacks,
                           std::initializer_list<ProviderInterface> interfaces) {
    GTypeInfo info{};
    info.class_size = sizeof(ProviderClass);
    info.class_init = &initClass;
    info.class_data = callbacks;
    info.instance_size = sizeof(Provider);
    info.instance_init = &construct;
    const GType type =
        g_type_module_register_type(module, G_TYPE_OBJECT, name, &info, GTypeFlags{});
    for (const ProviderInterface& each : interfaces) {
        const GInterfaceInfo interface { each.init, nullptr, nullptr };
        g_type_module_add_interface(module, type, each.type, &interface);
    }
    return type;
}

Drive& driveOf(gpointer provider) {
    return static_cast<Provider*>(provider)->drive;
}

} // namespace FileManagers
