#include "Shell/Client/FollowedExtension.h"

#include "Shell/Client/FileURLText.h"
#include "Shell/FinderInterface.h"

#include <string_view>
#include <utility>
#include <vector>

namespace Shell {

namespace {

constexpr const char* kProperties = "org.freedesktop.DBus.Properties";

const std::string kPropertiesChanged =
    std::string("type='signal',interface='org.freedesktop.DBus.Properties',"
                "member='PropertiesChanged',path='") +
    FinderInterface::kObject + "',arg0='" + FinderInterface::kInterface + "'";

struct TextProperty {
    std::string_view name;
    std::string ToolbarItem::*member;
};
constexpr TextProperty kTextProperties[] = {
    {"ToolbarItemName",    &ToolbarItem::name     },
    {"ToolbarItemToolTip", &ToolbarItem::toolTip  },
    {"ToolbarItemImage",   &ToolbarItem::imageName},
};

int readText(sd_bus_message* message, std::string& text) {
    const char* value = "";
    const int result = sd_bus_message_read(message, "v", "s", &value);
    if (result >= 0) {
        text = value;
    }
    return result;
}

int readFlag(sd_bus_message* message, bool& flag) {
    int value = 0;
    const int result = sd_bus_message_read(message, "v", "b", &value);
    if (result >= 0) {
        flag = value != 0;
    }
    return result;
}

int readFile(sd_bus_message* message, std::string& path) {
    std::string url;
    const int result = readText(message, url);
    path = pathOfFileURL(url).value_or("");
    return result;
}

} // namespace

// What the library calls. Nothing here raises: allocation alone could, and then nobody goes on.
struct FollowedExtension::Callbacks {
    static FollowedExtension& self(void* object) {
        return *static_cast<FollowedExtension*>(object);
    }

    static int propertiesTold(sd_bus_message* reply, void* object, sd_bus_error*) noexcept {
        self(object).takeAll(reply);
        return 1;
    }
    // An error is an answer as well.
    static int doubtAnswered(sd_bus_message*, void* object, sd_bus_error*) noexcept {
        self(object).doubt_.reset();
        ++self(object).changes_;
        return 1;
    }
    static int propertiesChanged(sd_bus_message* signal, void* object, sd_bus_error*) noexcept {
        FollowedExtension& extension = self(object);
        const char* const sender = sd_bus_message_get_sender(signal);
        // What was said before all properties were told is older than these.
        if (extension.isPresent_ && sender != nullptr && extension.owner() == sender &&
            sd_bus_message_skip(signal, "s") >= 0) {
            (void)extension.takeProperties(signal); // as much as can be read
            extension.noteChange();
        }
        return 0;
    }
};

FollowedExtension::FollowedExtension(ClientConnection& connection)
    : connection_(connection),
      name_(connection, FinderInterface::kName, [this] { ownerChanged(); }) {
    if (sd_bus* const bus = connection_.bus(); bus != nullptr) {
        // What fails here is the connection itself, as whoever serves it will see.
        (void)sd_bus_add_match_async(bus, nullptr, kPropertiesChanged.c_str(),
                                     &Callbacks::propertiesChanged, nullptr, this);
        connection_.awaitEvents();
    }
}

bool FollowedExtension::isKnown() const noexcept {
    return name_.isKnown() && (owner().empty() || hasAnswered_);
}

void FollowedExtension::noteChange() noexcept {
    ++generation_;
    ++changes_;
}

void FollowedExtension::ownerChanged() {
    properties_.reset();
    doubt_.reset();
    hasAnswered_ = false;
    isPresent_ = false;
    watchedFolders_.clear();
    toolbarItem_ = {};
    hostAnswers_ = true;
    noteChange();
    if (!owner().empty()) {
        askForProperties();
    }
}

void FollowedExtension::doubt() {
    if (doubt_ || owner().empty() || connection_.bus() == nullptr) {
        return;
    }
    sd_bus_slot* slot = nullptr;
    // Where this cannot be sent the connection has gone, as whoever serves it will see.
    if (sd_bus_call_method_async(connection_.bus(), &slot, owner().c_str(),
                                 FinderInterface::kObject, "org.freedesktop.DBus.Peer", "Ping",
                                 &Callbacks::doubtAnswered, this, nullptr) >= 0) {
        doubt_.reset(slot);
    }
    connection_.awaitEvents();
}

// Of the owner by its unique name: nobody is started for it.
void FollowedExtension::askForProperties() {
    sd_bus_message* made = nullptr;
    if (sd_bus_message_new_method_call(connection_.bus(), &made, owner().c_str(),
                                       FinderInterface::kObject, kProperties, "GetAll") < 0) {
        return;
    }
    const BusMessage question(made);
    sd_bus_slot* slot = nullptr;
    if (sd_bus_message_append(made, "s", FinderInterface::kInterface) >= 0 &&
        sd_bus_call_async(connection_.bus(), &slot, made, &Callbacks::propertiesTold, this, 0) >=
            0) {
        properties_.reset(slot);
    }
}

void FollowedExtension::takeAll(sd_bus_message* reply) {
    hasAnswered_ = true;
    // What answers otherwise is not one of ours, or about to go.
    isPresent_ = sd_bus_message_is_method_error(reply, nullptr) <= 0 && takeProperties(reply) >= 0;
    noteChange();
}

int FollowedExtension::takeProperties(sd_bus_message* message) {
    int result = sd_bus_message_enter_container(message, SD_BUS_TYPE_ARRAY, "{sv}");
    while (result >= 0 &&
           (result = sd_bus_message_enter_container(message, SD_BUS_TYPE_DICT_ENTRY, "sv")) > 0) {
        result = takeProperty(message);
        if (result >= 0) {
            result = sd_bus_message_exit_container(message);
        }
    }
    return result < 0 ? result : sd_bus_message_exit_container(message);
}

int FollowedExtension::takeProperty(sd_bus_message* message) {
    const char* name = nullptr;
    const int result = sd_bus_message_read(message, "s", &name);
    if (result < 0) {
        return result;
    }
    const std::string_view property(name);
    if (property == "WatchedFolders") {
        return takeWatchedFolders(message);
    }
    if (property == "HostAnswers") {
        return readFlag(message, hostAnswers_);
    }
    if (property == "ToolbarItemImageFile") {
        return readFile(message, toolbarItem_.imageFile);
    }
    for (const TextProperty& text : kTextProperties) {
        if (property == text.name) {
            return readText(message, toolbarItem_.*text.member);
        }
    }
    return sd_bus_message_skip(message, "v");
}

int FollowedExtension::takeWatchedFolders(sd_bus_message* message) {
    std::vector<std::string> folders;
    const char* url = nullptr;
    int result = sd_bus_message_enter_container(message, SD_BUS_TYPE_VARIANT, "as");
    if (result >= 0) {
        result = sd_bus_message_enter_container(message, SD_BUS_TYPE_ARRAY, "s");
    }
    while (result >= 0 &&
           (result = sd_bus_message_read_basic(message, SD_BUS_TYPE_STRING, &url)) > 0) {
        if (auto path = pathOfFileURL(url)) {
            folders.push_back(std::move(*path));
        }
    }
    if (result < 0 || (result = sd_bus_message_exit_container(message)) < 0) {
        return result;
    }
    watchedFolders_ = std::move(folders);
    return sd_bus_message_exit_container(message);
}

} // namespace Shell
