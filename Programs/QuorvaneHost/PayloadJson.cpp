#include "Programs/QuorvaneHost/PayloadJson.h"

#include "Platform/Foundation/Array.h"
#include "Platform/Foundation/Dictionary.h"
#include "Platform/Foundation/Null.h"
#include "Platform/Foundation/Number.h"
#include "Platform/Foundation/Set.h"
#include "Platform/Foundation/String.h"
#include "Programs/Json/PercentEncoding.h"

#include <cmath>
#include <string>

using Json = nlohmann::ordered_json;

namespace {

constexpr int kDepthLimit = 64;
constexpr std::size_t kValueLimit = 1'000'000;
constexpr std::size_t kTextLimit = std::size_t{64} << 20U;
constexpr const char* kRest = "\u2026";

class Converter {
  public:
    Json convert(const NS::RefPtr<NS::Object>& object, int depth) {
        if (depth > kDepthLimit || isFull()) {
            return kRest;
        }
        ++values_;
        if (!object || NS::as<NS::Null>(object)) {
            return nullptr;
        }
        if (const auto text = NS::as<NS::String>(object)) {
            return fromText(*text);
        }
        if (const auto number = NS::as<NS::Number>(object)) {
            return fromNumber(*number);
        }
        if (const auto array = NS::as<NS::Array>(object)) {
            return fromElements(*array, depth);
        }
        if (const auto set = NS::as<NS::Set>(object)) {
            return fromElements(*set, depth);
        }
        if (const auto dictionary = NS::as<NS::Dictionary>(object)) {
            return fromDictionary(*dictionary, depth);
        }
        return {
            {"$class",      object->objectClass().name   },
            {"description", object->description()->utf8()}
        };
    }

  private:
    bool isFull() const noexcept { return values_ > kValueLimit || textLength_ > kTextLimit; }

    Json fromText(const NS::String& text) {
        const std::string bytes = text.fileSystemRepresentation();
        textLength_ += bytes.size();
        if (NS::String::fromUtf8(bytes)) {
            return bytes;
        }
        return {
            {"$bytes", percentEncoded(bytes)}
        };
    }

    static Json fromNumber(const NS::Number& number) {
        switch (number.type()) {
        case NS::Number::Type::kBoolean:
            return number.boolValue();
        case NS::Number::Type::kInteger:
            return number.longLongValue();
        case NS::Number::Type::kUnsigned:
            return number.unsignedLongLongValue();
        default:
            return std::isfinite(number.doubleValue()) ? Json(number.doubleValue())
                                                       : Json(number.description()->utf8());
        }
    }

    template <class Collection>
    Json fromElements(const Collection& collection, int depth) {
        Json list = Json::array();
        for (const NS::Ref<NS::Object>& element : collection) {
            if (isFull()) {
                break;
            }
            list.push_back(convert(element, depth + 1));
        }
        return list;
    }

    Json fromDictionary(const NS::Dictionary& dictionary, int depth) {
        Json members = Json::object();
        for (const auto& [key, value] : dictionary) {
            if (isFull()) {
                break;
            }
            const std::string name = key->description()->utf8();
            textLength_ += name.size();
            members[name] = convert(value, depth + 1);
        }
        return members;
    }

    std::size_t values_ = 0;
    std::size_t textLength_ = 0;
};

} // namespace

Json jsonFromPayload(const NS::RefPtr<NS::Object>& object) {
    return Converter().convert(object, 0);
}
