#include "QVApi/Content/QVContentClass.h"

#include "Platform/Foundation/Exception.h"
#include "QVApi/Content/QVConversions.h"

#include <algorithm>
#include <string>

namespace {

// The nearest class, from a class upwards, that has something of its own.
template <class Has>
const QVContentClass* nearest(const QVContentClass& itemClass, Has&& has) {
    const QVContentClass* c = &itemClass;
    while (c != nullptr && !has(*c)) {
        c = c->superclass;
    }
    return c;
}

void appendArchived(const QVContentClass& itemClass, std::vector<std::string_view>& keys) {
    const bool fromAbove = itemClass.archiveList != QVArchiveList::kOwn;
    if (fromAbove && itemClass.superclass != nullptr) {
        appendArchived(*itemClass.superclass, keys);
    }
    keys.insert(keys.end(), itemClass.archived.begin(), itemClass.archived.end());
}

const NS::Property* propertyOf(const QVContentClass& itemClass, std::string_view key) {
    const NS::Property* const property = itemClass.objectClass.propertyForKey(key);
    if (property == nullptr) {
        NS::Exception::raise(NS::kUnknownKeyException,
                             std::string(itemClass.objectClass.name) + " has \"" +
                                 std::string(key) +
                                 "\" in a table, which is none of its properties");
    }
    return property;
}

} // namespace

std::span<const QVMapping> qvMappingOf(const QVContentClass& itemClass) {
    const auto* owner =
        nearest(itemClass, [](const QVContentClass& c) { return !c.mapping.empty(); });
    return owner == nullptr ? std::span<const QVMapping>() : owner->mapping;
}

std::vector<std::string_view> qvArchivedKeysOf(const QVContentClass& itemClass) {
    std::vector<std::string_view> keys;
    appendArchived(itemClass, keys);
    return keys;
}

const QVConverter& qvConverterFor(const QVContentClass& itemClass, std::string_view property) {
    for (const QVContentClass* c = &itemClass; c != nullptr; c = c->superclass) {
        for (const QVConversion& row : c->conversions) {
            if (row.property == property || row.property == QVConversion::kAnyOther) {
                return *row.converter;
            }
        }
    }
    return qvPassThrough;
}

QVResolvedClass::QVResolvedClass(const QVContentClass& itemClass) {
    for (const QVMapping& row : qvMappingOf(itemClass)) {
        mapped.push_back({propertyOf(itemClass, row.property),
                          &qvConverterFor(itemClass, row.property), NS::str(row.reply),
                          row.reply.find('.') != std::string_view::npos});
    }
    for (const std::string_view key : qvArchivedKeysOf(itemClass)) {
        archived.push_back(propertyOf(itemClass, key));
        if (std::ranges::count(archived, archived.back()) > 1) {
            NS::Exception::raise(NS::kInvalidArgumentException,
                                 std::string(itemClass.objectClass.name) + " archives \"" +
                                     std::string(key) + "\" twice");
        }
    }
    const auto* builder =
        nearest(itemClass, [](const QVContentClass& c) { return c.itemWithDict != nullptr; });
    itemWithDict = builder == nullptr ? nullptr : builder->itemWithDict;
}
