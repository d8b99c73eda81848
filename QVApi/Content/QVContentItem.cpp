#include "QVApi/Content/QVContentItem.h"

#include "Platform/Foundation/Exception.h"
#include "Platform/Foundation/Format.h"
#include "Platform/Foundation/KeyedArchiver.h"
#include "Platform/Foundation/KeyedUnarchiver.h"

#include <string>

namespace {

constexpr auto kProperties = NS::propertiesOf<QVContentItem>();
constexpr auto kSynchedProperties = NS::propertiesOf<QVSynchedItem>();

constexpr std::string_view kSynchedArchived[] = {"dateModified"};

const NS::ClassRegistration kRegistration(QVContentItem::kClass);
const NS::ClassRegistration kSynchedRegistration(QVSynchedItem::kClass);

// The nearest class, from a class upwards, that has something of its own.
template <class Has>
const QVContentClass* nearest(const QVContentClass& itemClass, Has&& has) {
    const QVContentClass* c = &itemClass;
    while (c != nullptr && !has(*c)) {
        c = c->superclass;
    }
    return c;
}

std::span<const QVMapping> mappingOf(const QVContentClass& itemClass) {
    const auto* owner =
        nearest(itemClass, [](const QVContentClass& c) { return !c.mapping.empty(); });
    return owner == nullptr ? std::span<const QVMapping>() : owner->mapping;
}

void appendArchived(const QVContentClass& itemClass, std::vector<std::string_view>& keys) {
    const bool fromAbove = itemClass.archiveList != QVArchiveList::kOwn;
    if (fromAbove && itemClass.superclass != nullptr) {
        appendArchived(*itemClass.superclass, keys);
    }
    keys.insert(keys.end(), itemClass.archived.begin(), itemClass.archived.end());
}

} // namespace

constinit const NS::Class QVContentItem::kClass{
    .name = "QVContentItem",
    .superclass = &NS::Object::kClass,
    .properties = kProperties,
    .createForCoder = &qvCreateForCoder<QVContentItem>,
};
constinit const QVContentClass QVContentItem::kContentClass{
    .objectClass = QVContentItem::kClass,
    .create = &qvCreate<QVContentItem>,
    .archivedProperties = &qvArchivedProperties<QVContentItem>,
};

constinit const NS::Class QVSynchedItem::kClass{
    .name = "QVSynchedItem",
    .superclass = &QVContentItem::kClass,
    .properties = kSynchedProperties,
    .createForCoder = &qvCreateForCoder<QVSynchedItem>,
};
constinit const QVContentClass QVSynchedItem::kContentClass{
    .objectClass = QVSynchedItem::kClass,
    .superclass = &QVContentItem::kContentClass,
    .archiveList = QVArchiveList::kOwn,
    .archived = kSynchedArchived,
    .create = &qvCreate<QVSynchedItem>,
    .archivedProperties = &qvArchivedProperties<QVSynchedItem>,
};

NS::Ref<NS::String> qvDefaultIdentifier() {
    static const NS::Ref<NS::String>& identifier = *new NS::Ref<NS::String>(NS::str("default"));
    return identifier;
}

std::vector<const NS::Property*> qvFindArchivedProperties(const QVContentClass& itemClass) {
    std::vector<std::string_view> keys;
    appendArchived(itemClass, keys);
    std::vector<const NS::Property*> properties;
    for (const std::string_view key : keys) {
        const NS::Property* const property = itemClass.objectClass.propertyForKey(key);
        if (property == nullptr) {
            NS::Exception::raise(NS::kUnknownKeyException,
                                 std::string(itemClass.objectClass.name) + " archives \"" +
                                     std::string(key) + "\", which is none of its properties");
        }
        properties.push_back(property);
    }
    return properties;
}

NS::RefPtr<QVContentItem> QVContentItem::itemWithDict_error(const QVContentClass& itemClass,
                                                            const NS::Dictionary& reply,
                                                            NS::RefPtr<NS::Error>* error) {
    const NS::Ref<QVContentItem> item = itemClass.create();
    NS::RefPtr<NS::Error> unasked;
    NS::RefPtr<NS::Error>* const location = error != nullptr ? error : &unasked;
    bool failed = false;
    for (const QVMapping& row : mappingOf(itemClass)) {
        const auto value = parseValue_forKey_error(
            itemClass, reply.valueForKeyPath(*NS::str(row.reply)), row.property, location);
        if (value) {
            item->setValue_forKeyPath(value, *NS::str(row.property));
        } else {
            failed = true;
        }
    }
    return failed ? nullptr : NS::RefPtr<QVContentItem>(item);
}

NS::RefPtr<NS::Object> QVContentItem::parseValue_forKey_error(const QVContentClass& itemClass,
                                                              const NS::RefPtr<NS::Object>& value,
                                                              std::string_view key,
                                                              NS::RefPtr<NS::Error>* error) {
    const auto* const owner =
        nearest(itemClass, [](const QVContentClass& c) { return c.parseValue != nullptr; });
    return owner == nullptr ? value : owner->parseValue(value, key, error);
}

NS::Ref<NS::Dictionary> QVContentItem::mappingDict(const QVContentClass& itemClass) {
    const auto mapping = NS::make<NS::MutableDictionary>();
    for (const QVMapping& row : mappingOf(itemClass)) {
        mapping->setObject_forKey(NS::str(row.reply), row.property);
    }
    return mapping;
}

NS::Ref<NS::Array> QVContentItem::encodeArray(const QVContentClass& itemClass) {
    std::vector<std::string_view> keys;
    appendArchived(itemClass, keys);
    const auto list = NS::make<NS::MutableArray>();
    for (const std::string_view key : keys) {
        list->addObject(NS::str(key));
    }
    return list;
}

bool QVContentItem::isEqualTo(const NS::Object* other) const {
    if (const auto* const item = NS::as<QVContentItem>(other)) {
        return identifier() == item->identifier();
    }
    return NS::Object::isEqualTo(other);
}

void QVContentItem::encodeWithCoder(NS::KeyedArchiver& coder) const {
    coder.encodeDouble_forKey(timeReceived(), "timeReceived");
    for (const NS::Property* const property : contentClass().archivedProperties()) {
        coder.encodeObject_forKey(property->get(*this), property->key);
    }
}

void QVContentItem::initWithCoder(NS::KeyedUnarchiver& coder) {
    setTimeReceived(coder.decodeDoubleForKey("timeReceived"));
    for (const NS::Property* const property : contentClass().archivedProperties()) {
        property->set(*this, coder.decodeObjectForKey(property->key));
    }
}
