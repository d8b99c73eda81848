#include "Platform/Foundation/PlainValueCoding.h"

#include "Platform/Foundation/Array.h"
#include "Platform/Foundation/Data.h"
#include "Platform/Foundation/Date.h"
#include "Platform/Foundation/Dictionary.h"
#include "Platform/Foundation/EqualityBudget.h"
#include "Platform/Foundation/Error.h"
#include "Platform/Foundation/KeyedArchiveNames.h"
#include "Platform/Foundation/KeyedArchiver.h"
#include "Platform/Foundation/KeyedUnarchiver.h"
#include "Platform/Foundation/Null.h"
#include "Platform/Foundation/Number.h"
#include "Platform/Foundation/Set.h"
#include "Platform/Foundation/String.h"
#include "Platform/Foundation/URL.h"

// How the classes of this folder stand in an archive: the keys and kinds of the platform.
namespace NS {

namespace {

const ClassRegistration kRegistrations[] = {
    ClassRegistration(Array::kClass),
    ClassRegistration(MutableArray::kClass),
    ClassRegistration(Data::kClass),
    ClassRegistration(MutableData::kClass),
    ClassRegistration(Date::kClass),
    ClassRegistration(Dictionary::kClass),
    ClassRegistration(MutableDictionary::kClass),
    ClassRegistration(Error::kClass),
    ClassRegistration(Null::kClass),
    ClassRegistration(Number::kClass),
    ClassRegistration(Set::kClass),
    ClassRegistration(MutableSet::kClass),
    ClassRegistration(String::kClass),
    ClassRegistration(MutableString::kClass),
    ClassRegistration(URL::kClass),
};

// A text, or the UTF-8 bytes of one.
Ref<String> textFrom(KeyedUnarchiver& coder) {
    if (const auto text = coder.decodeObjectOfClassForKey<String>("NS.string")) {
        return text->twin();
    }
    const auto text = coder.decodeTextOfUtf8ForKey("NS.bytes");
    return text ? Ref<String>(*text) : String::fromAscii("");
}

// The data that another object may have as well; without any, empty ones.
Ref<Data> dataFrom(KeyedUnarchiver& coder) {
    const auto data = coder.decodeObjectOfClassForKey<Data>(
        coder.containsValueForKey("NS.data") ? "NS.data" : "NS.bytes");
    return data ? Ref<Data>(*data) : Data::dataWithBytes({});
}

RefPtr<Object> decodeString(KeyedUnarchiver& coder) {
    return textFrom(coder);
}

RefPtr<Object> decodeMutableString(KeyedUnarchiver& coder) {
    return make<MutableString>(*textFrom(coder));
}

RefPtr<Object> decodeData(KeyedUnarchiver& coder) {
    return dataFrom(coder)->twin();
}

RefPtr<Object> decodeMutableData(KeyedUnarchiver& coder) {
    return make<MutableData>(*dataFrom(coder));
}

RefPtr<Object> decodeDate(KeyedUnarchiver& coder) {
    return make<Date>(coder.decodeDoubleForKey(KeyedArchiveNames::kTimeKey));
}

RefPtr<Object> decodeNull(KeyedUnarchiver&) {
    return Null::null();
}

// Some writers box numbers into objects of their own.
RefPtr<Object> decodeNumber(KeyedUnarchiver& coder) {
    for (const std::string_view key : {"NS.number", "NS.boolval", "NS.intval", "NS.dblval"}) {
        if (const auto number = coder.decodeObjectOfClassForKey<Number>(key)) {
            return number;
        }
    }
    coder.raiseRefused("it has no value");
}

RefPtr<Object> decodeURL(KeyedUnarchiver& coder) {
    const auto base = coder.decodeObjectOfClassForKey<URL>("NS.base");
    const auto relative = coder.decodeObjectOfClassForKey<String>("NS.relative");
    const auto url = relative ? URL::URLWithString_relativeToURL(*relative, base) : nullptr;
    if (!url) {
        coder.raiseRefused("its text is no URL");
    }
    return url;
}

RefPtr<Object> decodeError(KeyedUnarchiver& coder) {
    const std::int64_t code = coder.decodeInt64ForKey("NSCode");
    const auto domain = coder.decodeObjectOfClassForKey<String>("NSDomain");
    const auto userInfo = coder.decodeObjectOfClassForKey<Dictionary>("NSUserInfo");
    if (!domain) {
        coder.raiseRefused("it has no domain");
    }
    return make<Error>(Ref<String>(*domain), code, userInfo);
}

struct DecoderOfClass {
    const Class* objectClass;
    ValueDecoder decode;
};

// Texts and data stand in archives as plain values, but other writers, and we ourselves for a text
// that reads "$null", put them in a dictionary as well.
constexpr DecoderOfClass kValueDecoders[] = {
    {&String::kClass,        &decodeString       },
    {&MutableString::kClass, &decodeMutableString},
    {&Data::kClass,          &decodeData         },
    {&MutableData::kClass,   &decodeMutableData  },
    {&Date::kClass,          &decodeDate         },
    {&Null::kClass,          &decodeNull         },
    {&Number::kClass,        &decodeNumber       },
    {&URL::kClass,           &decodeURL          },
    {&Error::kClass,         &decodeError        },
};

} // namespace

ValueDecoder valueDecoderFor(const Class& objectClass) noexcept {
    for (const DecoderOfClass& row : kValueDecoders) {
        if (row.objectClass == &objectClass) {
            return row.decode;
        }
    }
    return nullptr;
}

void String::encodeWithCoder(KeyedArchiver& coder) const {
    coder.encodeText_forKey(*this, "NS.string");
}

void Data::encodeWithCoder(KeyedArchiver& coder) const {
    coder.encodeBytes_forKey(bytes(), "NS.data");
}

// The archiver writes dates itself; this is for whoever asks.
void Date::encodeWithCoder(KeyedArchiver& coder) const {
    coder.encodeDouble_forKey(seconds_, KeyedArchiveNames::kTimeKey);
}

// There is one null and nothing to tell of it.
void Null::encodeWithCoder(KeyedArchiver&) const {}

void Array::encodeWithCoder(KeyedArchiver& coder) const {
    coder.encodeObjects_forKey(
        count(), [this](std::size_t i) -> const Object& { return objects_[i]; }, "NS.objects");
}

void Array::initWithCoder(KeyedUnarchiver& coder) {
    objects_ = coder.decodeElementsForKey("NS.objects");
}

void Set::encodeWithCoder(KeyedArchiver& coder) const {
    coder.encodeObjects_forKey(
        count(), [this](std::size_t i) -> const Object& { return objects_[i]; }, "NS.objects");
}

void Set::initWithCoder(KeyedUnarchiver& coder) {
    insertWithin(coder.equalityBudget(), coder.decodeKeysForKey("NS.objects"));
}

void Dictionary::encodeWithCoder(KeyedArchiver& coder) const {
    coder.encodeObjects_forKey(
        count(), [this](std::size_t i) -> const Object& { return entries_[i].first; }, "NS.keys");
    coder.encodeObjects_forKey(
        count(), [this](std::size_t i) -> const Object& { return entries_[i].second; },
        "NS.objects");
}

void Dictionary::initWithCoder(KeyedUnarchiver& coder) {
    std::vector<Ref<Object>> keys = coder.decodeKeysForKey("NS.keys");
    std::vector<Ref<Object>> objects = coder.decodeObjectsForKey("NS.objects");
    if (keys.size() != objects.size()) {
        coder.raiseRefused("it has not as many objects as keys");
    }
    std::vector<Entry> entries;
    entries.reserve(keys.size());
    for (std::size_t i = 0; i < keys.size(); ++i) {
        entries.emplace_back(std::move(keys[i]), std::move(objects[i]));
    }
    setEntriesWithin(coder.equalityBudget(), std::move(entries));
}

void Error::encodeWithCoder(KeyedArchiver& coder) const {
    coder.encodeInt64_forKey(code_, "NSCode");
    coder.encodeObject_forKey(domain_, "NSDomain");
    coder.encodeObject_forKey(userInfo_, "NSUserInfo");
}

void URL::encodeWithCoder(KeyedArchiver& coder) const {
    coder.encodeObject_forKey(baseURL(), "NS.base");
    coder.encodeObject_forKey(relativeString(), "NS.relative");
}

} // namespace NS
