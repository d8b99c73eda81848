#include "Shell/FinderBusObject.h"
#include "Shell/FinderInterface.h"

#include <string>
#include <vector>

namespace Shell {

namespace {

// Who leaves the bus: a unique name is lost once and for ever.
constexpr const char* kNameLost =
    "type='signal',sender='org.freedesktop.DBus',path='/org/freedesktop/DBus',"
    "interface='org.freedesktop.DBus',member='NameOwnerChanged',arg2=''";

} // namespace

// What the library calls.
struct FinderBusObject::Callbacks {
    using Text = const std::string& (PublishedState::*)() const noexcept;

    template <Handler handler>
    static int handle(sd_bus_message* message, void* object, sd_bus_error* error) {
        return static_cast<FinderBusObject*>(object)->guarded(handler, message, error);
    }

    template <Text property>
    static int text(sd_bus*, const char*, const char*, const char*, sd_bus_message* reply,
                    void* object, sd_bus_error*) {
        const PublishedState& state = static_cast<FinderBusObject*>(object)->state_;
        return sd_bus_message_append(reply, "s", (state.*property)().c_str());
    }
    static int generation(sd_bus*, const char*, const char*, const char*, sd_bus_message* reply,
                          void* object, sd_bus_error*) {
        return sd_bus_message_append(reply, "t",
                                     static_cast<FinderBusObject*>(object)->state_.generation());
    }
    static int hostAnswers(sd_bus*, const char*, const char*, const char*, sd_bus_message* reply,
                           void* object, sd_bus_error*) {
        const bool value = static_cast<FinderBusObject*>(object)->state_.hostAnswers();
        return sd_bus_message_append(reply, "b", static_cast<int>(value));
    }
    static int watchedFolders(sd_bus*, const char*, const char*, const char*, sd_bus_message* reply,
                              void* object, sd_bus_error*) {
        int result = sd_bus_message_open_container(reply, SD_BUS_TYPE_ARRAY, "s");
        for (const std::string& url :
             static_cast<FinderBusObject*>(object)->state_.watchedFolders()) {
            result = result < 0 ? result : sd_bus_message_append(reply, "s", url.c_str());
        }
        return result < 0 ? result : sd_bus_message_close_container(reply);
    }

    static const sd_bus_vtable kTable[];
};

// Every method may be called by whoever reaches the session bus: only its user does.
const sd_bus_vtable FinderBusObject::Callbacks::kTable[] = {
    SD_BUS_VTABLE_START(SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_PROPERTY(PublishedState::kWatchedFolders, "as", watchedFolders, 0,
                    SD_BUS_VTABLE_PROPERTY_EMITS_CHANGE),
    SD_BUS_PROPERTY(PublishedState::kGeneration, "t", generation, 0,
                    SD_BUS_VTABLE_PROPERTY_EMITS_CHANGE),
    SD_BUS_PROPERTY(PublishedState::kHostAnswers, "b", hostAnswers, 0,
                    SD_BUS_VTABLE_PROPERTY_EMITS_CHANGE),
    SD_BUS_PROPERTY("ToolbarItemName", "s", text<&PublishedState::name>, 0,
                    SD_BUS_VTABLE_PROPERTY_CONST),
    SD_BUS_PROPERTY(PublishedState::kToolTip, "s", text<&PublishedState::toolTip>, 0,
                    SD_BUS_VTABLE_PROPERTY_EMITS_CHANGE),
    SD_BUS_PROPERTY("ToolbarItemImage", "s", text<&PublishedState::imageName>, 0,
                    SD_BUS_VTABLE_PROPERTY_CONST),
    SD_BUS_PROPERTY("ToolbarItemImageFile", "s", text<&PublishedState::imageFile>, 0,
                    SD_BUS_VTABLE_PROPERTY_CONST),
    SD_BUS_METHOD_WITH_NAMES(
        "Menu", "tass", SD_BUS_PARAM(kind) SD_BUS_PARAM(selection) SD_BUS_PARAM(target), "sa(ssb)",
        SD_BUS_PARAM(title) SD_BUS_PARAM(entries), handle<&FinderBusObject::menu>, 0),
    SD_BUS_METHOD_WITH_NAMES("Run", "tsasst",
                             SD_BUS_PARAM(kind) SD_BUS_PARAM(action) SD_BUS_PARAM(selection)
                                 SD_BUS_PARAM(target) SD_BUS_PARAM(deadline),
                             "", , handle<&FinderBusObject::run>, 0),
    SD_BUS_METHOD_WITH_NAMES("MenuOfPaths", "ay", SD_BUS_PARAM(place), "ay", SD_BUS_PARAM(menu),
                             handle<&FinderBusObject::menuOfPaths>, 0),
    SD_BUS_METHOD_WITH_NAMES("RunOnPaths", "sayt",
                             SD_BUS_PARAM(action) SD_BUS_PARAM(place) SD_BUS_PARAM(deadline), "", ,
                             handle<&FinderBusObject::runOnPaths>, 0),
    SD_BUS_METHOD_WITH_NAMES("BeginObserving", "sb",
                             SD_BUS_PARAM(folder) SD_BUS_PARAM(untilCallerGoes), "", ,
                             handle<&FinderBusObject::beginObserving>, 0),
    SD_BUS_METHOD_WITH_NAMES("EndObserving", "s", SD_BUS_PARAM(folder), "", ,
                             handle<&FinderBusObject::endObserving>, 0),
    SD_BUS_METHOD_WITH_NAMES("RequestBadge", "s", SD_BUS_PARAM(item), "", ,
                             handle<&FinderBusObject::requestBadge>, 0),
    SD_BUS_VTABLE_END,
};

int FinderBusObject::exportOn(sd_bus* bus) {
    const int result =
        sd_bus_add_object_vtable(bus, nullptr, FinderInterface::kObject,
                                 FinderInterface::kInterface, Callbacks::kTable, this);
    if (result < 0) {
        return result;
    }
    return sd_bus_add_match_async(bus, nullptr, kNameLost,
                                  Callbacks::handle<&FinderBusObject::nameLost>, nullptr, this);
}

void FinderBusObject::publishChanges(sd_bus* bus) {
    std::vector<const char*> changes = state_.takeChanges();
    if (changes.empty()) {
        return;
    }
    changes.push_back(nullptr);
    // What fails here is the connection itself, as whoever serves it will see.
    (void)sd_bus_emit_properties_changed_strv(bus, FinderInterface::kObject,
                                              FinderInterface::kInterface,
                                              const_cast<char**>(changes.data()));
}

} // namespace Shell
