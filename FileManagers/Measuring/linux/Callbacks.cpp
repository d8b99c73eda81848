// What a plug-in gives away to be called back: by its signals, sources and calls. Functions that
// are not of a plug-in are passed on untouched.

#include "FileManagers/Measuring/linux/PlugInCode.h"
#include "FileManagers/Measuring/linux/TimedCall.h"

#include <gio/gio.h>
#include <glib-unix.h>

namespace {

using namespace FileManagers::Measuring;

// A function with what it was to be called with.
template <class Function>
struct Callback {
    Function* function;
    gpointer data;
    GDestroyNotify destroy = nullptr;
};

template <class Function>
void forget(gpointer data) {
    auto* const callback = static_cast<Callback<Function>*>(data);
    if (callback->destroy != nullptr) {
        callback->destroy(callback->data);
    }
    delete callback;
}

// Signals

void invokeTimed(GClosure* closure, GValue* result, guint count, const GValue* values,
                 gpointer hint, gpointer name) {
    const TimedCall call(static_cast<const char*>(name));
    closure->marshal(closure, result, count, values, hint, nullptr);
}

void forgetTimed(gpointer data, GClosure* closure) {
    const TimedCall call("forget");
    auto* const callback = static_cast<Callback<void(gpointer, GClosure*)>*>(data);
    callback->function(callback->data, closure);
    delete callback;
}

GClosure* timedClosure(const char* signal, GCallback handler, gpointer data,
                       GClosureNotify destroy) {
    GClosure* const closure = g_cclosure_new(handler, data, nullptr);
    if (destroy != nullptr) {
        g_closure_add_finalize_notifier(
            closure, new Callback<void(gpointer, GClosure*)>{destroy, data}, &forgetTimed);
    }
    // The name lives as long as the process.
    g_closure_set_meta_marshal(closure, const_cast<char*>(g_intern_string(signal)), &invokeTimed);
    return closure;
}

// Sources

gboolean dispatchTimed(gpointer data) {
    const auto& callback = *static_cast<Callback<gboolean(gpointer)>*>(data);
    const TimedCall call("idle");
    return callback.function(callback.data);
}

gboolean serveTimed(gint descriptor, GIOCondition condition, gpointer data) {
    const auto& callback = *static_cast<Callback<gboolean(gint, GIOCondition, gpointer)>*>(data);
    const TimedCall call("serve");
    return callback.function(descriptor, condition, callback.data);
}

// Calls on the session bus

void answerTimed(GObject* object, GAsyncResult* result, gpointer data) {
    {
        const auto& callback =
            *static_cast<Callback<void(GObject*, GAsyncResult*, gpointer)>*>(data);
        const TimedCall call("answer");
        callback.function(object, result, callback.data);
    }
    forget<void(GObject*, GAsyncResult*, gpointer)>(data);
}

using SignalFunction = void(GDBusConnection*, const char*, const char*, const char*, const char*,
                            GVariant*, gpointer);

void signalTimed(GDBusConnection* bus, const char* sender, const char* path, const char* interface,
                 const char* name, GVariant* parameters, gpointer data) {
    const auto& callback = *static_cast<Callback<SignalFunction>*>(data);
    const TimedCall call("signal");
    callback.function(bus, sender, path, interface, name, parameters, callback.data);
}

// The provider

GInstanceInitFunc constructor = nullptr;

void constructTimed(GTypeInstance* instance, gpointer type) {
    const TimedCall call("construct");
    constructor(instance, type);
}

} // namespace

extern "C" {

gulong g_signal_connect_data(gpointer instance, const char* signal, GCallback handler,
                             gpointer data, GClosureNotify destroy, GConnectFlags flags) {
    static auto* const connect = next<decltype(g_signal_connect_data)>(__func__);
    if (flags == 0 && isOfPlugIn(handler)) {
        return g_signal_connect_closure(instance, signal,
                                        timedClosure(signal, handler, data, destroy), FALSE);
    }
    return connect(instance, signal, handler, data, destroy, flags);
}

guint g_idle_add_full(gint priority, GSourceFunc function, gpointer data, GDestroyNotify destroy) {
    static auto* const add = next<decltype(g_idle_add_full)>(__func__);
    if (isOfPlugIn(function)) {
        using Timed = gboolean(gpointer);
        return add(priority, &dispatchTimed, new Callback<Timed>{function, data, destroy},
                   &forget<Timed>);
    }
    return add(priority, function, data, destroy);
}

guint g_unix_fd_add(gint descriptor, GIOCondition condition, GUnixFDSourceFunc function,
                    gpointer data) {
    static auto* const add = next<decltype(g_unix_fd_add)>(__func__);
    if (isOfPlugIn(function)) {
        using Timed = gboolean(gint, GIOCondition, gpointer);
        return g_unix_fd_add_full(G_PRIORITY_DEFAULT, descriptor, condition, &serveTimed,
                                  new Callback<Timed>{function, data}, &forget<Timed>);
    }
    return add(descriptor, condition, function, data);
}

void g_dbus_connection_call(GDBusConnection* bus, const char* name, const char* path,
                            const char* interface, const char* method, GVariant* parameters,
                            const GVariantType* type, GDBusCallFlags flags, gint timeout,
                            GCancellable* cancellable, GAsyncReadyCallback function,
                            gpointer data) {
    static auto* const send = next<decltype(g_dbus_connection_call)>(__func__);
    if (function != nullptr && isOfPlugIn(function)) {
        data = new Callback<void(GObject*, GAsyncResult*, gpointer)>{function, data};
        function = &answerTimed;
    }
    send(bus, name, path, interface, method, parameters, type, flags, timeout, cancellable,
         function, data);
}

guint g_dbus_connection_signal_subscribe(GDBusConnection* bus, const char* sender,
                                         const char* interface, const char* name, const char* path,
                                         const char* argument, GDBusSignalFlags flags,
                                         GDBusSignalCallback function, gpointer data,
                                         GDestroyNotify destroy) {
    static auto* const subscribe = next<decltype(g_dbus_connection_signal_subscribe)>(__func__);
    if (isOfPlugIn(function)) {
        data = new Callback<SignalFunction>{function, data, destroy};
        function = &signalTimed;
        destroy = &forget<SignalFunction>;
    }
    return subscribe(bus, sender, interface, name, path, argument, flags, function, data, destroy);
}

GType g_type_module_register_type(GTypeModule* module, GType parent, const char* name,
                                  const GTypeInfo* info, GTypeFlags flags) {
    static auto* const registerType = next<decltype(g_type_module_register_type)>(__func__);
    GTypeInfo timed = *info;
    if (info->instance_init != nullptr && isOfPlugIn(info->instance_init)) {
        constructor = info->instance_init; // a plug-in has one such type
        timed.instance_init = &constructTimed;
    }
    return registerType(module, parent, name, &timed, flags);
}
}
