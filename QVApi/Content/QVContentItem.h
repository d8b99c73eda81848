#pragma once

#include "Platform/Foundation/Array.h"
#include "Platform/Foundation/Date.h"
#include "Platform/Foundation/Dictionary.h"
#include "Platform/Foundation/Error.h"
#include "Platform/Foundation/Property.h"
#include "Platform/Foundation/String.h"
#include "QVApi/Content/QVContentClass.h"

#include <string_view>

// Chooses the constructor for an item that an archive is restored into: what the class's own
// initialiser sets is absent there unless it was archived.
struct QVRestored {};

// The root of the records that the client receives from the service and passes between its
// processes.
//
// A class is a declaration of properties, a mapping table, an archive list and the few conversions
// that are its own. A property holds what the reply or the archive had, whatever its declared type,
// and may be read and set from several threads; everything else belongs to one thread at a time.
class QVContentItem : public NS::Object {
    NS_OBJECT(QVContentItem)
  public:
    // A time set by the item's owner.
    NS_RECORD_SCALAR(double, timeReceived, setTimeReceived)
    // The service's identifier, or a fixed one.
    NS_RECORD_PROPERTY(NS::String, identifier, setIdentifier)
    // The dictionary that an owner says it was made from; not archived.
    NS_RECORD_PROPERTY(NS::Dictionary, parsingFrom, setParsingFrom)

    static const QVContentClass kContentClass;
    virtual const QVContentClass& contentClass() const noexcept { return kContentClass; }

    QVContentItem() = default;
    explicit QVContentItem(QVRestored) {}

    // A new item of a class from a reply: each value of the mapping table is read, converted and
    // stored. Nil when a conversion gave nil, as it does for a value that is missing and has no
    // default. The error location may be null; nothing here writes it. Each class has the same
    // without its first argument.
    static NS::RefPtr<QVContentItem> itemWithDict_error(const QVContentClass& itemClass,
                                                        const NS::Dictionary& reply,
                                                        NS::RefPtr<NS::Error>* error);
    // The same for an element of a reply's list. Nil also when the element is malformed, that is no
    // dictionary, or has a value that its conversion does not read and would raise for in a reply:
    // one bad entry is to cost a listing that entry, not the process.
    static NS::RefPtr<QVContentItem> itemWithElement_error(const QVContentClass& itemClass,
                                                           const NS::Object& element,
                                                           NS::RefPtr<NS::Error>* error);
    // A class's conversion of one raw value, by the property's key.
    static NS::RefPtr<NS::Object> parseValue_forKey_error(const QVContentClass& itemClass,
                                                          const NS::RefPtr<NS::Object>& value,
                                                          std::string_view key,
                                                          NS::RefPtr<NS::Error>* error);
    // A class's tables as collections: property key to reply key path, and what is archived.
    static NS::Ref<NS::Dictionary> mappingDict(const QVContentClass& itemClass);
    static NS::Ref<NS::Array> encodeArray(const QVContentClass& itemClass);

    // Two items are equal when their identifiers are the very same object, or both have none. Equal
    // texts do not count; the test DiffersForAnEqualIdentifierThatIsAnotherObject holds it.
    bool isEqualTo(const NS::Object* other) const override;

    void encodeWithCoder(NS::KeyedArchiver& coder) const override;
    void initWithCoder(NS::KeyedUnarchiver& coder) override;
};

// An item that the service keeps in step by its date. Its archive list leaves the identifier out.
class QVSynchedItem : public QVContentItem {
    QV_CONTENT_ITEM(QVSynchedItem, QVContentItem)
  public:
    NS_RECORD_PROPERTY(NS::Date, dateModified, setDateModified)
};

// The fixed identifier of items of which there is one: always the same object.
NS::Ref<NS::String> qvDefaultIdentifier();

template <class Item>
NS::Ref<NS::Object> qvCreateForCoder() {
    return NS::make<Item>(QVRestored{});
}
