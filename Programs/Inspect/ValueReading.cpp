#include "Programs/Inspect/ValueReading.h"

#include "Platform/Foundation/Array.h"
#include "Platform/Foundation/Dictionary.h"
#include "Platform/Foundation/EqualityBudget.h"
#include "Platform/Foundation/Exception.h"
#include "Platform/Foundation/Limits.h"
#include "Platform/Foundation/Null.h"
#include "Platform/Foundation/Number.h"
#include "Platform/Foundation/Set.h"
#include "Platform/Foundation/String.h"
#include "Programs/Inspect/InspectionError.h"
#include "Programs/Inspect/ValueForms.h"

#include <nlohmann/json.hpp>

#include <cstdint>
#include <limits>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace Inspection {

namespace {

using Json = nlohmann::json;

// Builds the value while the text goes by.
class ValueBuilder final : public nlohmann::json_sax<Json> {
  public:
    ValueBuilder(Forms forms, std::size_t length) noexcept : forms_(forms), budget_(length) {}

    const NS::RefPtr<NS::Object>& value() const noexcept { return root_; }

    // Where it is by now, for whoever looks for a mistake there: "/files/3/name".
    std::string place() const {
        std::string path;
        for (const Frame& frame : open_) {
            if (frame.kind == Kind::kObject || frame.kind == Kind::kForm) {
                path += frame.key ? '/' + frame.key->utf8() : "";
            } else {
                path += '/' + std::to_string(frame.elements.size());
            }
        }
        constexpr std::size_t kShown = 200;
        return path.size() <= kShown ? path : "\u2026" + path.substr(path.size() - kShown);
    }

    bool null() override { return put(NS::Null::null()); }
    bool boolean(bool value) override { return put(NS::Number::numberWithBool(value)); }
    bool number_integer(std::int64_t value) override {
        return put(NS::Number::numberWithLongLong(value));
    }
    bool number_unsigned(std::uint64_t value) override {
        return put(value <= std::uint64_t{std::numeric_limits<std::int64_t>::max()}
                       ? NS::Number::numberWithLongLong(static_cast<std::int64_t>(value))
                       : NS::Number::numberWithUnsignedLongLong(value));
    }
    // The parser takes an integer that is too long for a real number.
    bool number_float(double value, const std::string& text) override {
        if (text.find_first_of(".eE") == std::string::npos) {
            throw Error("the integer " + text.substr(0, NS::Limits::kQuotedName) +
                        " takes more than 64 bits");
        }
        return put(NS::Number::numberWithDouble(value));
    }
    bool string(std::string& utf8) override { return put(NS::str(utf8)); }
    bool binary(Json::binary_t&) override { return false; } // JSON has none

    bool start_object(std::size_t) override {
        open(Kind::kObject);
        return true;
    }

    bool key(std::string& utf8) override {
        Frame& object = open_.back();
        if (object.kind == Kind::kForm) {
            throw Error("\"" + object.form + "\" stands together with \"" + utf8 + '"');
        }
        const bool isFirst = object.entries.empty();
        const bool hasDollar = forms_ == Forms::kValues && utf8.starts_with('$');
        if (hasDollar && !utf8.starts_with("$$")) {
            object.key = NS::str(utf8);
            beginForm(object, utf8, isFirst);
            return true;
        }
        object.key = NS::str(hasDollar ? utf8.substr(1) : utf8);
        if (isFirst) {
            object.number = ++count_;
        }
        return true;
    }

    bool end_object() override {
        Frame object = close();
        if (object.kind == Kind::kForm) {
            return endForm(object);
        }
        if (object.entries.empty()) {
            object.number = ++count_;
        }
        return putNumbered(dictionaryOf(object), object.number);
    }

    bool start_array(std::size_t) override {
        const Kind kind = open_.empty() ? Kind::kArray : kindOfArrayIn(open_.back());
        open(kind);
        if (kind != Kind::kPair) {
            open_.back().number = ++count_;
        }
        return true;
    }

    bool end_array() override {
        Frame array = close();
        switch (array.kind) {
        case Kind::kSet:
            return putNumbered(setOf(array), array.number);
        case Kind::kPair:
            endPair(array);
            return true;
        case Kind::kPairs:
            return putNumbered(dictionaryOf(array), array.number);
        default:
            return putNumbered(NS::make<NS::Array>(std::move(array.elements)), array.number);
        }
    }

    // The parser's message begins with the name of its exception in brackets.
    bool parse_error(std::size_t, const std::string&, const Json::exception& exception) override {
        const std::string message = exception.what();
        const std::size_t bracket = message.find("] ");
        throw Error(bracket == std::string::npos ? message : message.substr(bracket + 2));
    }

  private:
    enum class Kind : std::uint8_t {
        kObject, // of which no key, or one that is no form, was met
        kForm,
        kArray,
        kSet,   // the array of "$set"
        kPairs, // the array of "$dictionary"
        kPair,  // an array in it
    };

    // An object or array that is open.
    struct Frame {
        Kind kind;
        std::uint32_t number = 0; // of a collection, as "$ref" has it
        std::string form = {};
        bool hasArray = false;                // a form of a collection that was given one
        NS::RefPtr<NS::String> key = nullptr; // of the value that comes next
        NS::RefPtr<NS::Object> contents = nullptr;
        std::vector<NS::Ref<NS::Object>> elements = {};
        std::vector<NS::Dictionary::Entry> entries = {};
    };

    static Kind kindOfArrayIn(Frame& parent) {
        if (parent.kind == Kind::kPairs) {
            return Kind::kPair;
        }
        const bool isSet = parent.form == "$set";
        parent.hasArray = isSet || parent.form == "$dictionary";
        return isSet ? Kind::kSet : (parent.hasArray ? Kind::kPairs : Kind::kArray);
    }

    void open(Kind kind) {
        if (open_.size() > NS::Limits::kDepth) {
            throw Error("values stand too deep within one another");
        }
        open_.push_back({kind});
    }

    Frame close() {
        Frame frame = std::move(open_.back());
        open_.pop_back();
        return frame;
    }

    static void beginForm(Frame& object, const std::string& form, bool isFirst) {
        if (form == "$class") {
            throw Error("a record, which stands in archives only and is not encoded");
        }
        if (!isFirst) {
            throw Error("\"" + form + "\" stands together with other keys");
        }
        object.kind = Kind::kForm;
        object.form = form;
    }

    bool endForm(const Frame& object) {
        if (object.form == "$nil") {
            return putNil(object.contents);
        }
        if (object.form == "$ref") {
            return put(collectionOf(object.contents));
        }
        if (object.form == "$set" || object.form == "$dictionary") {
            return putCollection(object);
        }
        return put(valueOfForm(object.form, object.contents));
    }

    bool putNil(const NS::RefPtr<NS::Object>& contents) {
        const auto truth = NS::as<NS::Number>(contents);
        if (!truth || truth->type() != NS::Number::Type::kBoolean || !truth->boolValue()) {
            throw Error("\"$nil\" takes true");
        }
        if (!open_.empty()) {
            throw Error("nil within a collection");
        }
        return true; // which the root is from the beginning
    }

    bool putCollection(const Frame& object) {
        if (!object.hasArray) {
            throw Error("\"" + object.form + "\" takes an array");
        }
        return put(NS::Ref<NS::Object>(*object.contents));
    }

    NS::Ref<NS::Object> collectionOf(const NS::RefPtr<NS::Object>& contents) const {
        const auto number = NS::as<NS::Number>(contents);
        const bool isInteger = number && number->type() == NS::Number::Type::kInteger;
        const std::int64_t wanted = isInteger ? number->longLongValue() : 0;
        if (wanted < 1 || wanted > static_cast<std::int64_t>(count_)) {
            throw Error("\"$ref\" takes the number of a collection that stands before it");
        }
        const auto place = static_cast<std::size_t>(wanted - 1);
        if (place >= collections_.size() || !collections_[place]) {
            throw Error("a collection that holds itself, which is not encoded");
        }
        return NS::Ref<NS::Object>(*collections_[place]);
    }

    void endPair(Frame& pair) {
        if (pair.elements.size() != 2) {
            throw Error("\"$dictionary\" takes pairs of a key and a value");
        }
        Frame& pairs = open_.back();
        pairs.entries.emplace_back(std::move(pair.elements[0]), std::move(pair.elements[1]));
    }

    template <class Make>
    static auto withinBudget(Make&& make) {
        try {
            return make();
        } catch (const NS::Exception&) {
            throw Error("telling the keys of a dictionary or the members of a set apart takes too "
                        "much work");
        }
    }

    NS::Ref<NS::Object> setOf(Frame& frame) {
        return withinBudget([&] { return NS::make<NS::Set>(std::move(frame.elements), budget_); });
    }

    // Keys keep their order, so that the first one that is missing is the one that stands twice.
    NS::Ref<NS::Object> dictionaryOf(const Frame& frame) {
        const auto dictionary =
            withinBudget([&] { return NS::make<NS::Dictionary>(frame.entries, budget_); });
        auto kept = dictionary->begin();
        for (const auto& [key, value] : frame.entries) {
            if (kept == dictionary->end() || kept->first != key) {
                throw Error("the key " + key->description()->utf8() + " stands twice");
            }
            ++kept;
        }
        return dictionary;
    }

    bool putNumbered(NS::Ref<NS::Object> collection, std::uint32_t number) {
        if (collections_.size() < number) {
            collections_.resize(number);
        }
        collections_[number - 1] = collection;
        return put(std::move(collection));
    }

    bool put(NS::Ref<NS::Object> value) {
        if (open_.empty()) {
            root_ = std::move(value);
            return true;
        }
        Frame& parent = open_.back();
        switch (parent.kind) {
        case Kind::kObject:
            parent.entries.emplace_back(NS::Ref<NS::Object>(*parent.key), std::move(value));
            break;
        case Kind::kForm:
            parent.contents = std::move(value);
            break;
        case Kind::kPairs:
            throw Error("\"$dictionary\" takes pairs of a key and a value");
        default:
            parent.elements.push_back(std::move(value));
        }
        return true;
    }

    Forms forms_;
    NS::EqualityBudget budget_;
    std::vector<Frame> open_;
    std::vector<NS::RefPtr<NS::Object>> collections_; // complete ones, by number less one
    std::uint32_t count_ = 0;
    NS::RefPtr<NS::Object> root_;
};

} // namespace

NS::RefPtr<NS::Object> valueFromJson(std::string_view json, Forms forms) {
    ValueBuilder builder(forms, json.size());
    try {
        (void)Json::sax_parse(json, &builder); // what is wrong raises
    } catch (const Error& error) {
        const std::string place = builder.place();
        throw Error(place.empty() ? error.what() : error.what() + (", at " + place));
    }
    return builder.value();
}

} // namespace Inspection
