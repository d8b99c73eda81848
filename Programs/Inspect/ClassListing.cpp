#include "Programs/Inspect/ClassListing.h"

#include "QVApi/Content/QVContentClasses.h"

#include <algorithm>
#include <iomanip>
#include <string>

namespace Inspection {

namespace {

std::string textOf(const NS::Ref<NS::Object>& object) {
    return object->description()->utf8();
}

void printChain(const NS::Class& objectClass, std::ostream& out) {
    out << objectClass.name;
    for (const NS::Class* c = objectClass.superclass; c != nullptr; c = c->superclass) {
        out << " : " << c->name;
    }
    out << '\n';
}

void printMapping(const NS::Dictionary& mapping, std::ostream& out) {
    std::size_t width = 0;
    for (const auto& [property, reply] : mapping) {
        width = std::max(width, textOf(property).size());
    }
    out << "    mapping" << (mapping.count() == 0 ? " (empty)\n" : "\n");
    for (const auto& [property, reply] : mapping) {
        out << "        " << std::left << std::setw(static_cast<int>(width)) << textOf(property)
            << "  " << textOf(reply) << '\n';
    }
}

void printArchiveList(const NS::Array& keys, std::ostream& out) {
    out << "    archived" << (keys.count() == 0 ? " (nothing)\n" : "\n");
    for (const NS::Ref<NS::Object>& key : keys) {
        out << "        " << textOf(key) << '\n';
    }
}

} // namespace

void printClasses(std::ostream& out) {
    for (const QVContentClass* const itemClass : qvContentClasses()) {
        printChain(itemClass->objectClass, out);
        printMapping(*QVContentItem::mappingDict(*itemClass), out);
        printArchiveList(*QVContentItem::encodeArray(*itemClass), out);
    }
}

} // namespace Inspection
