#include "Programs/Inspect/ItemMapping.h"

#include "Platform/Foundation/Description.h"
#include "Platform/Foundation/Exception.h"
#include "QVApi/Content/QVContentClasses.h"

#include <algorithm>
#include <optional>

namespace Inspection {

namespace {

std::string reasonOf(const NS::Exception& exception) {
    return NS::descriptionOf(exception.reason().get())->utf8();
}

// Why a class makes nothing of one value of a reply; nothing when it makes something.
std::optional<std::string> failureOf(const QVContentClass& itemClass, const NS::Dictionary& reply,
                                     const std::string& property, const NS::String& path) {
    try {
        const auto raw = reply.valueForKeyPath(path);
        NS::RefPtr<NS::Error> error;
        if (QVContentItem::parseValue_forKey_error(itemClass, raw, property, &error)) {
            return std::nullopt;
        }
        return raw ? "its value cannot be used" : "it is missing";
    } catch (const NS::Exception& exception) {
        return reasonOf(exception);
    }
}

} // namespace

const QVContentClass* contentClassNamed(std::string_view name) {
    const auto classes = qvContentClasses();
    const auto found = std::ranges::find_if(
        classes, [&](const QVContentClass* each) { return each->objectClass.name == name; });
    return found == classes.end() ? nullptr : *found;
}

NS::RefPtr<QVContentItem> mapReply(const QVContentClass& itemClass, const NS::Dictionary& reply,
                                   std::vector<MappingFailure>& failures) {
    const auto mapping = QVContentItem::mappingDict(itemClass);
    for (const auto& [property, path] : *mapping) {
        const std::string key = property->description()->utf8();
        const auto place = NS::cast<NS::String>(path);
        if (const auto reason = failureOf(itemClass, reply, key, *place)) {
            failures.push_back({key, place->utf8(), *reason});
        }
    }
    NS::RefPtr<NS::Error> error;
    return failures.empty() ? QVContentItem::itemWithDict_error(itemClass, reply, &error) : nullptr;
}

} // namespace Inspection
