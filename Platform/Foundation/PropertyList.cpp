#include "Platform/Foundation/PropertyList.h"

#include "Platform/Foundation/Array.h"
#include "Platform/Foundation/BinaryPropertyListReader.h"
#include "Platform/Foundation/BinaryPropertyListWriter.h"
#include "Platform/Foundation/Date.h"
#include "Platform/Foundation/Dictionary.h"
#include "Platform/Foundation/EqualityBudget.h"
#include "Platform/Foundation/Exception.h"
#include "Platform/Foundation/Format.h"
#include "Platform/Foundation/Limits.h"
#include "Platform/Foundation/Number.h"
#include "Platform/Foundation/PropertyListValues.h"
#include "Platform/Foundation/XMLPropertyList.h"

#include <optional>
#include <string>
#include <vector>

namespace NS {

namespace {

using Item = BinaryPropertyListReader::Item;
using Kind = BinaryPropertyListReader::Kind;
using Reference = BinaryPropertyListWriter::Reference;

// Both directions recurse over the collections; the first thing that is wrong ends them by this
// exception, which does not leave the file.
struct Refusal {
    Ref<String> reason;
};

[[noreturn]] void refuse(const char* reason) {
    throw Refusal{str(reason)};
}

void checkDepth(std::size_t depth) {
    if (depth > Limits::kDepth) {
        refuse("collections stand too deep within one another");
    }
}

class Writing {
  public:
    Reference add(const Object& object, std::size_t depth) {
        checkDepth(depth);
        if (const auto* array = as<Array>(&object)) {
            return addArray(*array, depth);
        }
        if (const auto* dictionary = as<Dictionary>(&object)) {
            return addDictionary(*dictionary, depth);
        }
        return addValue(object);
    }

    Ref<Data> finish(Reference top) { return Data::dataWithBuffer(list_.finish(top)); }

  private:
    Reference addArray(const Array& array, std::size_t depth) {
        std::vector<Reference> elements;
        elements.reserve(array.count());
        for (const Ref<Object>& element : array) {
            elements.push_back(add(*element, depth + 1));
        }
        return list_.addArray(elements);
    }

    Reference addDictionary(const Dictionary& dictionary, std::size_t depth) {
        std::vector<Reference> keys;
        std::vector<Reference> values;
        for (const auto& [key, value] : dictionary) {
            const auto* text = as<String>(key.get());
            if (text == nullptr) {
                refuse("a key that is no text");
            }
            keys.push_back(list_.addString(*text));
            values.push_back(add(*value, depth + 1));
        }
        return list_.addDictionary(keys, values);
    }

    Reference addValue(const Object& object) {
        if (const auto* text = as<String>(&object)) {
            return list_.addString(*text);
        }
        if (const auto* number = as<Number>(&object)) {
            return list_.addNumber(*number);
        }
        if (const auto* data = as<Data>(&object)) {
            return list_.addData(data->bytes());
        }
        if (const auto* date = as<Date>(&object)) {
            return list_.addDate(date->timeIntervalSinceReferenceDate());
        }
        throw Refusal{stringWithFormat("an object of class %s", object.objectClass().name)};
    }

    BinaryPropertyListWriter list_;
};

class Reading {
  public:
    Reading(BinaryPropertyListReader list, std::size_t size)
        : list_(list), values_(size), equalityBudget_(size), elementsLeft_(size) {}

    Ref<Object> object(std::uint64_t number, std::size_t depth) {
        checkDepth(depth);
        const Item item = list_.item(number);
        if (item.kind == Kind::kArray) {
            return array(item, depth);
        }
        if (item.kind == Kind::kDictionary) {
            return dictionary(item, depth);
        }
        const char* reason = nullptr;
        const RefPtr<Object> value = values_.value(item, number, reason);
        if (!value) {
            refuse(reason);
        }
        return Ref<Object>(*value);
    }

  private:
    // The collections of an honest list have no more elements in all than it has bytes.
    void spendElements(std::uint64_t count) {
        if (count > elementsLeft_) {
            refuse("collections that overlap");
        }
        elementsLeft_ -= count;
    }

    Ref<Object> array(const Item& item, std::size_t depth) {
        spendElements(item.count);
        std::vector<Ref<Object>> elements;
        elements.reserve(static_cast<std::size_t>(item.count));
        for (std::uint64_t i = 0; i < item.count; ++i) {
            elements.push_back(object(list_.reference(item, i), depth + 1));
        }
        return make<Array>(std::move(elements));
    }

    Ref<Object> dictionary(const Item& item, std::size_t depth) {
        spendElements(item.count);
        std::vector<Dictionary::Entry> entries;
        entries.reserve(static_cast<std::size_t>(item.count));
        for (std::uint64_t i = 0; i < item.count; ++i) {
            Ref<Object> key = object(list_.reference(item, i), depth + 1);
            if (!key->isKindOfClass(String::kClass)) {
                refuse("a key that is no text");
            }
            entries.emplace_back(std::move(key),
                                 object(list_.reference(item, item.count + i), depth + 1));
        }
        return make<Dictionary>(std::move(entries), equalityBudget_);
    }

    BinaryPropertyListReader list_;
    PropertyListValues values_;
    EqualityBudget equalityBudget_;
    std::uint64_t elementsLeft_;
};

RefPtr<Object> readList(Bytes bytes, RefPtr<String>& reason) {
    const char* damage = nullptr;
    const auto list = BinaryPropertyListReader::open(bytes, damage);
    if (!list) {
        reason = str(damage);
        return nullptr;
    }
    try {
        return Reading(*list, bytes.size()).object(list->topObject(), 0);
    } catch (const Refusal& refusal) {
        reason = refusal.reason;
    } catch (const Exception& exception) {
        reason = exception.reason();
    }
    return nullptr;
}

} // namespace

RefPtr<Data> dataWithPropertyList(const Object& object, RefPtr<String>& reason) {
    try {
        Writing list;
        const Reference top = list.add(object, 0);
        return list.finish(top);
    } catch (const Refusal& refusal) {
        reason = refusal.reason;
    } catch (const Exception& exception) {
        reason = exception.reason();
    }
    return nullptr;
}

RefPtr<Object> propertyListWithData(const Data& data, RefPtr<String>& reason) {
    if (!isXMLPropertyList(data.bytes())) {
        return readList(data.bytes(), reason);
    }
    std::string damage;
    const auto list = binaryListOfXML(data.bytes(), damage);
    if (!list) {
        reason = str(damage);
        return nullptr;
    }
    return readList(*list, reason);
}

} // namespace NS
