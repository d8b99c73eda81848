#pragma once

#include "Platform/Foundation/Dictionary.h"
#include "Platform/Foundation/Error.h"
#include "Platform/Foundation/Property.h"
#include "Platform/Foundation/String.h"

#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

class QVContentItem;
struct QVContentClass;

// What the content model knows of a class beside its properties, as tables.
//
// A class says QV_CONTENT_ITEM in its body, declares its properties, and in its source file has its
// tables and one QV_DEFINE_CONTENT_ITEM with their names.

// One row of a mapping table: where in a service reply a property's value stands.
struct QVMapping {
    std::string_view property; // key of the item's property
    std::string_view reply;    // key path in the reply
};

// What turns a reply's raw value (nil when the reply lacks it) into a property's.
struct QVConverter {
    using Convert = NS::RefPtr<NS::Object> (*)(const NS::RefPtr<NS::Object>& value,
                                               NS::RefPtr<NS::Error>* error);

    // A result of nil fails the item. Raises NSInvalidArgumentException for a value that it does
    // not read. The error location is handed down to the items that a conversion builds, and not
    // written.
    Convert convert;
    // Whether it reads a value that is there.
    bool (*reads)(const NS::Object& value);
    // What it reads, for a message: "a text".
    const char* takes;
    // The class whose items it makes of a list's elements; null for any other conversion.
    const QVContentClass* elementClass = nullptr;

    NS::RefPtr<NS::Object> operator()(const NS::RefPtr<NS::Object>& value,
                                      NS::RefPtr<NS::Error>* error) const {
        return convert(value, error);
    }
};

// One row of a conversion table.
struct QVConversion {
    // For the property of a row that stands last in its table: every one that no row names.
    static constexpr std::string_view kAnyOther = "*";

    std::string_view property;
    const QVConverter* converter;
};

// How a class's archive list stands to its superclass's.
enum class QVArchiveList : std::uint8_t { kInherited, kOwn, kExtended };

// A class's tables, its superclasses' taken in, with all that they name looked up: once for each
// class, as a listing has a million items of one.
struct QVResolvedClass;

// One constant per class.
struct QVContentClass {
    using Build = NS::RefPtr<QVContentItem> (*)(const NS::Dictionary& reply,
                                                NS::RefPtr<NS::Error>* error);

    const NS::Class& objectClass;
    const QVContentClass* superclass = nullptr;
    // A new item with the class's initialiser.
    NS::Ref<QVContentItem> (*create)() = nullptr;
    const QVResolvedClass& (*resolved)() = nullptr;

    // The whole table; without rows the superclass's.
    std::span<const QVMapping> mapping = {};
    // What differs from the superclass's conversions. The root passes every value through.
    std::span<const QVConversion> conversions = {};
    // The keys of the properties that are archived, in order.
    QVArchiveList archiveList = QVArchiveList::kInherited;
    std::span<const std::string_view> archived = {};
    // For a class that builds its items from replies without a table; null for the superclass's.
    Build itemWithDict = nullptr;
};

struct QVResolvedClass {
    struct Value {
        const NS::Property* property;
        const QVConverter* converter;
        NS::Ref<NS::String> reply;
        bool isPath; // whether the reply's key has a dot in it
    };

    // Raises NSUnknownKeyException when a table names what is no property of the class.
    explicit QVResolvedClass(const QVContentClass& itemClass);

    std::vector<Value> mapped;
    std::vector<const NS::Property*> archived;
    QVContentClass::Build itemWithDict;
};

// A class's tables as its superclasses complete them.
std::span<const QVMapping> qvMappingOf(const QVContentClass& itemClass);
std::vector<std::string_view> qvArchivedKeysOf(const QVContentClass& itemClass);
const QVConverter& qvConverterFor(const QVContentClass& itemClass, std::string_view property);

// The rows of a class's description that are functions.
template <class Item>
NS::Ref<QVContentItem> qvCreate() {
    return NS::make<Item>();
}
template <class Item>
NS::Ref<NS::Object> qvCreateForCoder();
template <class Item>
const QVResolvedClass& qvResolved() {
    static const auto& resolved = *new QVResolvedClass(Item::kContentClass);
    return resolved;
}
template <class Item>
inline constexpr auto kQVProperties = NS::propertiesOf<Item>();

// In the body of a class of the content model, on a line of its own above the properties.
#define QV_CONTENT_ITEM(Self, Superclass)                                                          \
    NS_OBJECT(Self)                                                                                \
  public:                                                                                          \
    using Super_ = Superclass;                                                                     \
    using Superclass::Superclass;                                                                  \
    static const QVContentClass kContentClass;                                                     \
    const QVContentClass& contentClass() const noexcept override {                                 \
        return kContentClass;                                                                      \
    }                                                                                              \
    static NS::RefPtr<Self> itemWithDict_error(const NS::Dictionary& reply,                        \
                                               NS::RefPtr<NS::Error>* error) {                     \
        return NS::as<Self>(QVContentItem::itemWithDict_error(kContentClass, reply, error));       \
    }                                                                                              \
                                                                                                   \
  private:

// In the source file: the class's description, from its superclass's and the members of
// QVContentClass that follow its name, and its registration for archives.
#define QV_DEFINE_CONTENT_ITEM(Self, ...)                                                          \
    constinit const NS::Class Self::kClass{                                                        \
        .name = #Self,                                                                             \
        .superclass = &Self::Super_::kClass,                                                       \
        .properties = kQVProperties<Self>,                                                         \
        .createForCoder = &qvCreateForCoder<Self>,                                                 \
    };                                                                                             \
    constinit const QVContentClass Self::kContentClass{.objectClass = Self::kClass,                \
                                                       .superclass = &Self::Super_::kContentClass, \
                                                       .create = &qvCreate<Self>,                  \
                                                       .resolved = &qvResolved<Self>,              \
                                                       __VA_ARGS__};                               \
    namespace {                                                                                    \
    const NS::ClassRegistration k##Self##Registration(Self::kClass);                               \
    }
