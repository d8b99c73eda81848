#include "Programs/QuorvaneHost/Journal.h"

#include "Platform/Foundation/Data.h"
#include "Platform/Foundation/Exception.h"
#include "Platform/Foundation/KeyedUnarchiver.h"
#include "Platform/Ports/MachPort.h"
#include "Programs/QuorvaneHost/PayloadJson.h"
#include "QVFinderExtension/QVExtensionActions.h"

#include <algorithm>
#include <string_view>

using Json = nlohmann::ordered_json;

namespace {

Json payloadComponent(const NS::Data& component) {
    try {
        return jsonFromPayload(NS::KeyedUnarchiver::unarchiveObjectWithData(component));
    } catch (const NS::Exception& exception) {
        return {
            {"$undecodable", exception.what()}
        };
    }
}

std::string_view actionOf(const NS::Array& components) {
    const auto name = NS::as<NS::Data>(components.firstObject());
    return name ? NS::charactersOf(name->bytes()) : std::string_view();
}

} // namespace

void Journal::note(const NS::PortMessage& message) {
    const NS::Array& components = message.components();
    const std::string_view action = actionOf(components);
    if (std::ranges::find(kParseRoutines, action, &QVExtensionParseRoutine::action) ==
        std::end(kParseRoutines)) {
        return;
    }
    Json payload = Json::array();
    for (std::size_t i = 1; i < components.count(); ++i) {
        payload.push_back(payloadComponent(*NS::cast<NS::Data>(components.objectAtIndex(i))));
    }
    const auto& client = message.sendPort();
    const Json line = {
        {"action",  action                                               },
        {"payload", std::move(payload)                                   },
        {"client",  client ? Json(client->description()->utf8()) : Json()}
    };
    write(line);
    flush();
}

void Journal::noteDone(std::string_view action, const Json& path, const Json& members) {
    Json line = {
        {"done", action},
        {"path", path  }
    };
    line.update(members);
    write(line);
}

void Journal::noteRefused(std::string_view action, const Json& path, std::string_view reason) {
    write({
        {"refused", action},
        {"path",    path  },
        {"reason",  reason}
    });
}

void Journal::noteGone(std::string_view client, const Json& observed) {
    write({
        {"gone",     client  },
        {"observed", observed}
    });
}

void Journal::write(const Json& line) {
    out_ << line.dump(-1, ' ', false, Json::error_handler_t::replace) << '\n';
}
