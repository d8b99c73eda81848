#include "Platform/Foundation/ArchiveLimits.h"
#include "Platform/Foundation/Array.h"
#include "Platform/Foundation/Date.h"
#include "Platform/Foundation/Dictionary.h"
#include "Platform/Foundation/Error.h"
#include "Platform/Foundation/Exception.h"
#include "Platform/Foundation/Format.h"
#include "Platform/Foundation/KeyedArchiver.h"
#include "Platform/Foundation/KeyedUnarchiver.h"
#include "Platform/Foundation/Null.h"
#include "Platform/Foundation/Number.h"
#include "Platform/Foundation/PropertyListObjects.h"
#include "Platform/Foundation/Set.h"
#include "Platform/Foundation/URL.h"

#include <algorithm>
#include <iterator>

// How the platform's own values stand in a keyed archive: under which keys, and what a reader
// accepts.
namespace NS {

namespace {

using Kind = PropertyListNode::Kind;

constexpr auto kElement = [](const Ref<Object>& object) {
    return object.get();
};
constexpr auto kEntryKey = [](const Dictionary::Entry& entry) {
    return entry.first.get();
};
constexpr auto kEntryValue = [](const Dictionary::Entry& entry) {
    return entry.second.get();
};

[[noreturn]] void raiseDamagedValue(const char* className) {
    Exception::raise(
        kInvalidUnarchiveOperationException,
        stringWithFormat("*** -[NSKeyedUnarchiver decodeObjectForKey:]: the archive is "
                         "damaged: an object of class (%s) lacks a value",
                         className));
}

// How many objects comparing this one with another can visit, as far as that matters.
std::size_t comparisonCost(const Object& object, std::size_t limit) {
    std::size_t cost = 1;
    const auto add = [&](const Object& part) {
        if (cost <= limit) {
            cost += comparisonCost(part, limit - cost);
        }
    };
    if (const auto* array = as<Array>(&object)) {
        for (const Ref<Object>& each : *array) {
            add(*each);
        }
    } else if (const auto* set = as<Set>(&object)) {
        for (const Ref<Object>& each : *set) {
            add(*each);
        }
    } else if (const auto* dictionary = as<Dictionary>(&object)) {
        for (const auto& [key, value] : *dictionary) {
            add(*key);
            add(*value);
        }
    } else if (const auto* error = as<Error>(&object)) {
        add(*error->userInfo());
    }
    return cost;
}

bool isCompared(const Object& object) {
    return as<Array>(&object) != nullptr || as<Set>(&object) != nullptr ||
           as<Dictionary>(&object) != nullptr || as<Error>(&object) != nullptr;
}

// Keeps the comparisons of a set's members, or a dictionary's keys, within bounds.
class KeyGuard {
  public:
    void check(const Object& key) {
        if (!isCompared(key)) {
            return;
        }
        if (++collections_ > ArchiveLimits::kCollectionKeys ||
            comparisonCost(key, ArchiveLimits::kCollectionKeySize) >
                ArchiveLimits::kCollectionKeySize) {
            Exception::raise(kInvalidUnarchiveOperationException,
                             "*** -[NSKeyedUnarchiver decodeObjectForKey:]: too many collections, "
                             "or too large ones, are members of a set or keys of a dictionary");
        }
    }

  private:
    std::size_t collections_ = 0;
};

} // namespace

void String::encodeWithCoder(KeyedArchiver& coder) const {
    coder.encodeAsString(*this);
}

void MutableString::encodeWithCoder(KeyedArchiver& coder) const {
    coder.encodeText_forKey(*this, "NS.string");
}

void Number::encodeWithCoder(KeyedArchiver& coder) const {
    switch (type_) {
    case Type::kBoolean:
        return coder.encodeAsBool(boolValue());
    case Type::kInteger:
        return coder.encodeAsInt64(longLongValue());
    case Type::kUnsigned:
        return coder.encodeAsUInt64(unsignedLongLongValue());
    case Type::kFloat:
        return coder.encodeAsFloat(static_cast<float>(doubleValue()));
    case Type::kDouble:
        return coder.encodeAsDouble(doubleValue());
    }
}

void Data::encodeWithCoder(KeyedArchiver& coder) const {
    coder.encodeAsData(bytes());
}

void MutableData::encodeWithCoder(KeyedArchiver& coder) const {
    coder.encodeData_forKey(bytes(), "NS.data");
}

void Date::encodeWithCoder(KeyedArchiver& coder) const {
    coder.encodeDouble_forKey(seconds_, "NS.time");
}

void Null::encodeWithCoder(KeyedArchiver&) const {}

void Array::encodeWithCoder(KeyedArchiver& coder) const {
    coder.encodeObjects_forKey(*this, kElement, "NS.objects");
}

void Set::encodeWithCoder(KeyedArchiver& coder) const {
    coder.encodeObjects_forKey(*this, kElement, "NS.objects");
}

void Dictionary::encodeWithCoder(KeyedArchiver& coder) const {
    coder.encodeObjects_forKey(*this, kEntryKey, "NS.keys");
    coder.encodeObjects_forKey(*this, kEntryValue, "NS.objects");
}

void URL::encodeWithCoder(KeyedArchiver& coder) const {
    coder.encodeObject_forKey(baseURL(), "NS.base");
    coder.encodeObject_forKey(relativeString(), "NS.relative");
}

void Error::encodeWithCoder(KeyedArchiver& coder) const {
    coder.encodeInt64_forKey(code_, "NSCode");
    coder.encodeObject_forKey(domain_, "NSDomain");
    coder.encodeObject_forKey(userInfo_, "NSUserInfo");
}

KeyedUnarchiver::Decoder KeyedUnarchiver::decoderFor(std::string_view className) noexcept {
    struct Row {
        std::string_view className;
        Decoder decoder;
    };
    static constexpr Row kDecoders[] = {
        {"NSArray",             &KeyedUnarchiver::decodeArray            },
        {"NSMutableArray",      &KeyedUnarchiver::decodeMutableArray     },
        {"NSSet",               &KeyedUnarchiver::decodeSet              },
        {"NSMutableSet",        &KeyedUnarchiver::decodeMutableSet       },
        {"NSDictionary",        &KeyedUnarchiver::decodeDictionary       },
        {"NSMutableDictionary", &KeyedUnarchiver::decodeMutableDictionary},
        {"NSString",            &KeyedUnarchiver::decodeString           },
        {"NSMutableString",     &KeyedUnarchiver::decodeMutableString    },
        {"NSData",              &KeyedUnarchiver::decodeData             },
        {"NSMutableData",       &KeyedUnarchiver::decodeMutableData      },
        {"NSNumber",            &KeyedUnarchiver::decodeNumber           },
        {"NSDate",              &KeyedUnarchiver::decodeDate             },
        {"NSNull",              &KeyedUnarchiver::decodeNull             },
        {"NSURL",               &KeyedUnarchiver::decodeURL              },
        {"NSError",             &KeyedUnarchiver::decodeError            },
    };
    const auto* const row = std::ranges::find(kDecoders, className, &Row::className);
    return row == std::end(kDecoders) ? nullptr : row->decoder;
}

KeyedUnarchiver::Node KeyedUnarchiver::collectionForKey(std::string_view key) {
    const auto list = valueForKey(key);
    if (!list || list->kind != Kind::kArray) {
        raiseDamagedValue("NSArray, NSSet or NSDictionary");
    }
    return *list;
}

Ref<Object> KeyedUnarchiver::decodeRequired(const Node& list, std::size_t index) {
    const RefPtr<Object> object = decodeReference(nodeAt(referenceIn(list, index)));
    if (!object) {
        raiseDamagedValue("NSArray, NSSet or NSDictionary");
    }
    return Ref<Object>(*object);
}

// A collection is kept before it is filled: it may be among its own elements.
void KeyedUnarchiver::fill(Array& array, std::size_t number) {
    keep(number, RefPtr<Object>(&array));
    const Node elements = collectionForKey("NS.objects");
    array.objects_.reserve(elements.count);
    for (std::size_t i = 0; i < elements.count; ++i) {
        array.objects_.push_back(decodeRequired(elements, i));
    }
}

void KeyedUnarchiver::fill(Set& set, std::size_t number) {
    keep(number, RefPtr<Object>(&set));
    const Node elements = collectionForKey("NS.objects");
    KeyGuard guard;
    for (std::size_t i = 0; i < elements.count; ++i) {
        Ref<Object> element = decodeRequired(elements, i);
        guard.check(*element);
        set.insert(std::move(element));
    }
}

void KeyedUnarchiver::fill(Dictionary& dictionary, std::size_t number) {
    keep(number, RefPtr<Object>(&dictionary));
    const Node keys = collectionForKey("NS.keys");
    const Node values = collectionForKey("NS.objects");
    if (keys.count != values.count) {
        raiseDamagedValue("NSDictionary");
    }
    KeyGuard guard;
    for (std::size_t i = 0; i < keys.count; ++i) {
        Ref<Object> key = decodeRequired(keys, i);
        guard.check(*key);
        dictionary.setEntry({std::move(key), decodeRequired(values, i)});
    }
}

RefPtr<Object> KeyedUnarchiver::decodeArray(std::size_t number) {
    const auto array = make<Array>();
    fill(*array, number);
    return array;
}

RefPtr<Object> KeyedUnarchiver::decodeMutableArray(std::size_t number) {
    const auto array = make<MutableArray>();
    fill(*array, number);
    return array;
}

RefPtr<Object> KeyedUnarchiver::decodeSet(std::size_t number) {
    const auto set = make<Set>();
    fill(*set, number);
    return set;
}

RefPtr<Object> KeyedUnarchiver::decodeMutableSet(std::size_t number) {
    const auto set = make<MutableSet>();
    fill(*set, number);
    return set;
}

RefPtr<Object> KeyedUnarchiver::decodeDictionary(std::size_t number) {
    const auto dictionary = make<Dictionary>();
    fill(*dictionary, number);
    return dictionary;
}

RefPtr<Object> KeyedUnarchiver::decodeMutableDictionary(std::size_t number) {
    const auto dictionary = make<MutableDictionary>();
    fill(*dictionary, number);
    return dictionary;
}

RefPtr<Object> KeyedUnarchiver::decodeString(std::size_t number) {
    const auto value = valueForKey("NS.string");
    const RefPtr<String> text = value ? textOf(*value) : nullptr;
    if (!text) {
        raiseDamagedValue("NSString");
    }
    charge(*value);
    keep(number, text);
    return text;
}

RefPtr<Object> KeyedUnarchiver::decodeMutableString(std::size_t number) {
    const auto text = make<MutableString>(*cast<String>(decodeString(number)));
    keep(number, text);
    return text;
}

RefPtr<Object> KeyedUnarchiver::decodeData(std::size_t number) {
    const auto value = valueForKey("NS.data");
    if (!value || value->kind != Kind::kData) {
        raiseDamagedValue("NSData");
    }
    charge(*value);
    const auto data = Data::dataWithBytes(value->bytes);
    keep(number, data);
    return data;
}

RefPtr<Object> KeyedUnarchiver::decodeMutableData(std::size_t number) {
    const auto data = make<MutableData>(cast<Data>(decodeData(number))->bytes());
    keep(number, data);
    return data;
}

// Some writers box numbers into objects of their own.
RefPtr<Object> KeyedUnarchiver::decodeNumber(std::size_t number) {
    RefPtr<Object> object;
    for (const std::string_view key : {"NS.boolval", "NS.intval", "NS.dblval"}) {
        const auto value = valueForKey(key);
        object = value ? plainObject(*value) : object;
    }
    if (!as<Number>(object)) {
        raiseDamagedValue("NSNumber");
    }
    keep(number, object);
    return object;
}

RefPtr<Object> KeyedUnarchiver::decodeDate(std::size_t number) {
    if (!containsValueForKey("NS.time")) {
        raiseDamagedValue("NSDate");
    }
    const auto date = make<Date>(decodeDoubleForKey("NS.time"));
    keep(number, date);
    return date;
}

RefPtr<Object> KeyedUnarchiver::decodeNull(std::size_t number) {
    keep(number, Null::null());
    return Null::null();
}

RefPtr<Object> KeyedUnarchiver::decodeURL(std::size_t number) {
    const auto base = as<URL>(decodeObjectForKey("NS.base"));
    const auto relative = as<String>(decodeObjectForKey("NS.relative"));
    const RefPtr<URL> url = relative ? URL::URLWithString_relativeToURL(*relative, base) : nullptr;
    if (!url) {
        raiseDamagedValue("NSURL");
    }
    keep(number, url);
    return url;
}

RefPtr<Object> KeyedUnarchiver::decodeError(std::size_t number) {
    const std::int64_t code = decodeInt64ForKey("NSCode");
    const auto domain = as<String>(decodeObjectForKey("NSDomain"));
    if (!domain) {
        raiseDamagedValue("NSError");
    }
    const auto userInfo = as<Dictionary>(decodeObjectForKey("NSUserInfo"));
    const auto error = make<Error>(Ref<String>(*domain), code, userInfo);
    keep(number, error);
    return error;
}

} // namespace NS
