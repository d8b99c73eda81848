#include "Platform/Foundation/PropertyList.h"

#include "Platform/Foundation/ArchiveLimits.h"
#include "Platform/Foundation/Array.h"
#include "Platform/Foundation/BinaryPropertyListReader.h"
#include "Platform/Foundation/BinaryPropertyListWriter.h"
#include "Platform/Foundation/Date.h"
#include "Platform/Foundation/Dictionary.h"
#include "Platform/Foundation/Exception.h"
#include "Platform/Foundation/Format.h"
#include "Platform/Foundation/Number.h"
#include "Platform/Foundation/PropertyListObjects.h"

namespace NS {

namespace {

using Kind = PropertyListNode::Kind;
using ListNumber = BinaryPropertyListWriter::Number;

class Writer {
  public:
    Ref<Data> finish(const Object& value) { return writer_.finish(add(value, 0)); }

  private:
    ListNumber add(const Object& value, int depth) {
        if (depth > ArchiveLimits::kDepth) {
            Exception::raise(kInvalidArgumentException, "a property list is nested too deep");
        }
        if (const auto* text = as<String>(&value)) {
            return writer_.addString(*text);
        }
        if (const auto* number = as<Number>(&value)) {
            return addNumber(*number);
        }
        if (const auto* date = as<Date>(&value)) {
            return writer_.addDate(date->timeIntervalSinceReferenceDate());
        }
        if (const auto* data = as<Data>(&value)) {
            return writer_.addData(data->bytes());
        }
        if (const auto* array = as<Array>(&value)) {
            return addArray(*array, depth);
        }
        if (const auto* dictionary = as<Dictionary>(&value)) {
            return addDictionary(*dictionary, depth);
        }
        Exception::raise(kInvalidArgumentException,
                         stringWithFormat("property lists have no values of class %s",
                                          value.objectClass().name));
    }

    ListNumber addNumber(const Number& number) {
        switch (number.type()) {
        case Number::Type::kBoolean:
            return writer_.addBoolean(number.boolValue());
        case Number::Type::kInteger:
            return writer_.addInteger(number.longLongValue());
        case Number::Type::kUnsigned:
            return writer_.addUnsigned(number.unsignedLongLongValue());
        case Number::Type::kFloat:
            return writer_.addSinglePrecision(static_cast<float>(number.doubleValue()));
        default:
            return writer_.addReal(number.doubleValue());
        }
    }

    ListNumber addArray(const Array& array, int depth) {
        std::vector<ListNumber> elements;
        for (const Ref<Object>& element : array) {
            elements.push_back(add(*element, depth + 1));
        }
        return writer_.addArray(elements);
    }

    ListNumber addDictionary(const Dictionary& dictionary, int depth) {
        std::vector<ListNumber> keys;
        std::vector<ListNumber> values;
        for (const auto& [key, value] : dictionary) {
            if (as<String>(key.get()) == nullptr) {
                Exception::raise(kInvalidArgumentException,
                                 "a key of a property list's dictionary is no text");
            }
            keys.push_back(add(*key, depth + 1));
            values.push_back(add(*value, depth + 1));
        }
        return writer_.addDictionary(keys, values);
    }

    BinaryPropertyListWriter writer_;
};

class Reader {
  public:
    explicit Reader(const BinaryPropertyListReader& list) : list_(list) {}

    RefPtr<Object> value(std::size_t number, int depth) {
        const auto node = list_.object(number);
        // Objects of a sound list do not share bytes; those of one that unfolds without end do.
        charged_ += node ? 1 + node->bytes.size() : 0;
        if (!node || depth > ArchiveLimits::kDepth || charged_ > list_.size() * kSharing) {
            return nullptr;
        }
        if (node->kind == Kind::kArray || node->kind == Kind::kSet) {
            return array(*node, depth);
        }
        return node->kind == Kind::kDictionary ? dictionary(*node, depth) : plainObject(*node);
    }

  private:
    // Writers may share equal values, and each is made anew where it is referred to.
    static constexpr std::size_t kSharing = 16;

    RefPtr<Object> element(const PropertyListNode& collection, std::size_t index, int depth) {
        const auto number = list_.reference(collection, index);
        return number ? value(*number, depth + 1) : nullptr;
    }

    RefPtr<Object> array(const PropertyListNode& node, int depth) {
        const auto result = make<MutableArray>();
        for (std::size_t i = 0; i < node.count; ++i) {
            const auto object = element(node, i, depth);
            if (!object) {
                return nullptr;
            }
            result->addObject(object);
        }
        return result;
    }

    RefPtr<Object> dictionary(const PropertyListNode& node, int depth) {
        const auto result = make<MutableDictionary>();
        for (std::size_t i = 0; i < node.count; ++i) {
            const auto key = as<String>(element(node, i, depth));
            const auto object = key ? element(node, node.count + i, depth) : nullptr;
            if (!object) {
                return nullptr;
            }
            result->setObject_forKey(object, Ref<Object>(*key));
        }
        return result;
    }

    const BinaryPropertyListReader& list_;
    std::size_t charged_ = 0;
};

} // namespace

Ref<Data> propertyListData(const Object& value) {
    return Writer().finish(value);
}

RefPtr<Object> propertyListValue(const Data& data) {
    const auto list = BinaryPropertyListReader::open(data.bytes());
    return list ? Reader(*list).value(list->topObject(), 0) : nullptr;
}

} // namespace NS
