#include "QVApi/Content/QVContentItem.h"

#include "Platform/Foundation/KeyedArchiver.h"
#include "Platform/Foundation/KeyedUnarchiver.h"

namespace {

constexpr std::string_view kSynchedArchived[] = {"dateModified"};

// Archived for every item, whatever its class's list says.
constexpr const NS::Property& kTimeReceived = kQVProperties<QVContentItem>[0];
static_assert(kTimeReceived.key == "timeReceived");

const NS::ClassRegistration kRegistration(QVContentItem::kClass);

// Builds an item of a reply. A value that may not be converted fails it.
template <class MayConvert>
NS::RefPtr<QVContentItem> build(const QVContentClass& itemClass, const NS::Dictionary& reply,
                                NS::RefPtr<NS::Error>* error, MayConvert&& mayConvert) {
    const QVResolvedClass& tables = itemClass.resolved();
    NS::RefPtr<NS::Error> unasked;
    NS::RefPtr<NS::Error>* const location = error != nullptr ? error : &unasked;
    if (tables.itemWithDict != nullptr) {
        return tables.itemWithDict(reply, location);
    }
    const NS::Ref<QVContentItem> item = itemClass.create();
    bool failed = false;
    for (const QVResolvedClass::Value& row : tables.mapped) {
        const auto raw =
            row.isPath ? reply.valueForKeyPath(*row.reply) : reply.valueForKey(*row.reply);
        auto value =
            !raw || mayConvert(*row.converter, *raw) ? (*row.converter)(raw, location) : nullptr;
        if (value) {
            row.property->setUnshared(*item, std::move(value));
        } else {
            failed = true;
        }
    }
    return failed ? nullptr : NS::RefPtr<QVContentItem>(item);
}

} // namespace

constinit const NS::Class QVContentItem::kClass{
    .name = "QVContentItem",
    .superclass = &NS::Object::kClass,
    .properties = kQVProperties<QVContentItem>,
    .createForCoder = &qvCreateForCoder<QVContentItem>,
};
constinit const QVContentClass QVContentItem::kContentClass{
    .objectClass = QVContentItem::kClass,
    .create = &qvCreate<QVContentItem>,
    .resolved = &qvResolved<QVContentItem>,
};

QV_DEFINE_CONTENT_ITEM(QVSynchedItem, .archiveList = QVArchiveList::kOwn,
                       .archived = kSynchedArchived)

NS::Ref<NS::String> qvDefaultIdentifier() {
    static const NS::Ref<NS::String>& identifier = *new NS::Ref<NS::String>(NS::str("default"));
    return identifier;
}

NS::RefPtr<QVContentItem> QVContentItem::itemWithDict_error(const QVContentClass& itemClass,
                                                            const NS::Dictionary& reply,
                                                            NS::RefPtr<NS::Error>* error) {
    return build(itemClass, reply, error, [](const QVConverter&, const NS::Object&) {
        return true; // or the conversion raises
    });
}

NS::RefPtr<QVContentItem> QVContentItem::itemWithElement_error(const QVContentClass& itemClass,
                                                               const NS::Object& element,
                                                               NS::RefPtr<NS::Error>* error) {
    const auto* const reply = NS::as<NS::Dictionary>(&element);
    if (reply == nullptr) {
        return nullptr;
    }
    return build(itemClass, *reply, error,
                 [](const QVConverter& converter, const NS::Object& value) {
                     return converter.reads(value);
                 });
}

NS::RefPtr<NS::Object> QVContentItem::parseValue_forKey_error(const QVContentClass& itemClass,
                                                              const NS::RefPtr<NS::Object>& value,
                                                              std::string_view key,
                                                              NS::RefPtr<NS::Error>* error) {
    return qvConverterFor(itemClass, key)(value, error);
}

NS::Ref<NS::Dictionary> QVContentItem::mappingDict(const QVContentClass& itemClass) {
    const auto mapping = NS::make<NS::MutableDictionary>();
    for (const QVMapping& row : qvMappingOf(itemClass)) {
        mapping->setObject_forKey(NS::str(row.reply), row.property);
    }
    return mapping;
}

NS::Ref<NS::Array> QVContentItem::encodeArray(const QVContentClass& itemClass) {
    const auto list = NS::make<NS::MutableArray>();
    for (const std::string_view key : qvArchivedKeysOf(itemClass)) {
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
    coder.encodeDouble_of(timeReceived(), kTimeReceived);
    for (const NS::Property* const property : contentClass().resolved().archived) {
        coder.encodeProperty_of(*property, *this);
    }
}

void QVContentItem::initWithCoder(NS::KeyedUnarchiver& coder) {
    setTimeReceived(coder.decodeDoubleOf(kTimeReceived));
    coder.decodeProperties_of(contentClass().resolved().archived, *this);
}
