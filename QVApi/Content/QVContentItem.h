#pragma once

#include "Platform/Foundation/Array.h"
#include "Platform/Foundation/Date.h"
#include "Platform/Foundation/Dictionary.h"
#include "Platform/Foundation/Error.h"
#include "Platform/Foundation/Property.h"
#include "Platform/Foundation/String.h"

#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

class QVContentItem;

// One row of a mapping table: where in a service reply a property's value stands.
struct QVMapping {
    std::string_view property; // key path in the item
    std::string_view reply;    // key path in the reply
};

// How a class's archive list stands to its superclass's.
enum class QVArchiveList : std::uint8_t { kInherited, kOwn, kExtended };

// What the content model knows of a class beside its properties. One constant per class.
struct QVContentClass {
    using ParseValue = NS::RefPtr<NS::Object> (*)(const NS::RefPtr<NS::Object>& value,
                                                  std::string_view key,
                                                  NS::RefPtr<NS::Error>* error);
    using ArchivedProperties = std::span<const NS::Property* const> (*)();

    const NS::Class& objectClass;
    const QVContentClass* superclass = nullptr;
    // The whole table; without rows the superclass's.
    std::span<const QVMapping> mapping = {};
    // The key paths that are archived, in order.
    QVArchiveList archiveList = QVArchiveList::kInherited;
    std::span<const std::string_view> archived = {};
    // Turns a raw value of a reply (nil when the reply lacks it) into the property's; nil fails the
    // item. The error location is handed down and not written. Null for the superclass's; the root
    // passes every value through.
    ParseValue parseValue = nullptr;
    // A new item with the class's initialiser.
    NS::Ref<QVContentItem> (*create)() = nullptr;
    // The archive list's properties, found once.
    ArchivedProperties archivedProperties = nullptr;
};

// Declares what a class of the content model has beside its properties; the source file defines
// kClass and kContentClass.
#define QV_CONTENT_ITEM(Self)                                                                      \
    NS_OBJECT(Self)                                                                                \
  public:                                                                                          \
    static const QVContentClass kContentClass;                                                     \
    const QVContentClass& contentClass() const noexcept override {                                 \
        return kContentClass;                                                                      \
    }                                                                                              \
                                                                                                   \
  private:

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
    // default. The error location may be null; nothing here writes it.
    static NS::RefPtr<QVContentItem> itemWithDict_error(const QVContentClass& itemClass,
                                                        const NS::Dictionary& reply,
                                                        NS::RefPtr<NS::Error>* error);
    // A class's conversion of one raw value, by the property's key path.
    static NS::RefPtr<NS::Object> parseValue_forKey_error(const QVContentClass& itemClass,
                                                          const NS::RefPtr<NS::Object>& value,
                                                          std::string_view key,
                                                          NS::RefPtr<NS::Error>* error);
    // A class's tables as collections: property key path to reply key path, and what is archived.
    static NS::Ref<NS::Dictionary> mappingDict(const QVContentClass& itemClass);
    static NS::Ref<NS::Array> encodeArray(const QVContentClass& itemClass);

    // Two items are equal when their identifiers are the very same object, or both have none. Equal
    // texts do not count; the test DiffersForAnEqualIdentifierThatIsAnotherObject holds it.
    bool isEqualTo(const NS::Object* other) const override;

    void encodeWithCoder(NS::KeyedArchiver& coder) const override;
    void initWithCoder(NS::KeyedUnarchiver& coder) override;
};

// An item that the service keeps in step by its date.
class QVSynchedItem : public QVContentItem {
    QV_CONTENT_ITEM(QVSynchedItem)
  public:
    using QVContentItem::QVContentItem;

    NS_RECORD_PROPERTY(NS::Date, dateModified, setDateModified)
};

// The fixed identifier of items of which there is one: always the same object.
NS::Ref<NS::String> qvDefaultIdentifier();

// The properties of a class's archive list; raises when a key path of it is no property.
std::vector<const NS::Property*> qvFindArchivedProperties(const QVContentClass& itemClass);

// The rows of a class's tables that are functions.
template <class Item>
NS::Ref<QVContentItem> qvCreate() {
    return NS::make<Item>();
}
template <class Item>
NS::Ref<NS::Object> qvCreateForCoder() {
    return NS::make<Item>(QVRestored{});
}
template <class Item>
std::span<const NS::Property* const> qvArchivedProperties() {
    static const auto& properties =
        *new std::vector<const NS::Property*>(qvFindArchivedProperties(Item::kContentClass));
    return properties;
}
