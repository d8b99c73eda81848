#include "Programs/Inspect/ValueReading.h"

#include "Platform/Foundation/Array.h"
#include "Platform/Foundation/Date.h"
#include "Platform/Foundation/Dictionary.h"
#include "Platform/Foundation/EqualityBudget.h"
#include "Platform/Foundation/Exception.h"
#include "Platform/Foundation/Limits.h"
#include "Platform/Foundation/Null.h"
#include "Platform/Foundation/Number.h"
#include "Platform/Foundation/Set.h"
#include "Platform/Foundation/String.h"
#include "Programs/Inspect/FiniteNumbers.h"
#include "Programs/Inspect/InspectionError.h"
#include "Programs/Inspect/Printable.h"
#include "Programs/Inspect/ValueForms.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <string>
#include <utility>
#include <vector>

namespace Inspection {

namespace {

using Json = nlohmann::json;

class NoJson final : public Error {
  public:
    using Error::Error;
};

// Builds the value while the text goes by.
class ValueBuilder final : public nlohmann::json_sax<Json> {
  public:
    // The text has each number of those places as one that the parser takes, of its sign.
    ValueBuilder(Forms forms, std::size_t length, const std::vector<std::size_t>& overflowing)
        : forms_(forms), overflowing_(overflowing), budget_(length) {}

    const NS::RefPtr<NS::Object>& value() const noexcept { return root_; }

    // Where it is by now, for whoever looks for a mistake there: "/files/3/name", "the root".
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
        if (path.empty()) {
            return "the root";
        }
        return path.size() <= kShown ? path : "\u2026" + path.substr(path.size() - kShown);
    }

    bool null() override { return put(NS::Null::null()); }
    bool boolean(bool value) override { return put(NS::Number::numberWithBool(value)); }
    bool number_integer(std::int64_t value) override {
        ++numbers_;
        return put(NS::Number::numberWithLongLong(value));
    }
    bool number_unsigned(std::uint64_t value) override {
        ++numbers_;
        return put(value <= std::uint64_t{std::numeric_limits<std::int64_t>::max()}
                       ? NS::Number::numberWithLongLong(static_cast<std::int64_t>(value))
                       : NS::Number::numberWithUnsignedLongLong(value));
    }
    // The parser takes an integer that is too long for a real number; in somebody else's JSON it is
    // read as one, as its limits are whose key it is.
    bool number_float(double value, const std::string& text) override {
        if (std::ranges::binary_search(overflowing_, numbers_++)) {
            value = std::copysign(std::numeric_limits<double>::infinity(), value);
        }
        const bool isInteger = text.find_first_of(".eE") == std::string::npos;
        if (isInteger && forms_ == Forms::kValues) {
            throw Error("the integer " + text.substr(0, NS::Limits::kQuotedName) +
                        " takes more than 64 bits");
        }
        return put(NS::Number::numberWithDouble(value));
    }
    bool string(std::string& utf8) override { return put(NS::str(utf8)); }
    bool binary(Json::binary_t&) override { return false; } // JSON has none

    // Not too deep before it is known to be more than the form of a plain value.
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
            checkDepth(0);
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
        return putNumbered(dictionaryOf(object), object);
    }

    bool start_array(std::size_t) override {
        const Kind kind = open_.empty() ? Kind::kArray : kindOfArrayIn(open_.back());
        if (kind != Kind::kPair) {
            checkDepth(1);
        }
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
            return putNumbered(setOf(array), array);
        case Kind::kPair:
            endPair(array);
            return true;
        case Kind::kPairs:
            return putNumbered(dictionaryOf(array), array);
        default:
            return putNumbered(NS::make<NS::Array>(std::move(array.elements)), array);
        }
    }

    // The parser's message begins with the name of its exception in brackets.
    bool parse_error(std::size_t, const std::string&, const Json::exception& exception) override {
        const std::string message = exception.what();
        const std::size_t bracket = message.find("] ");
        throw NoJson(bracket == std::string::npos ? message : message.substr(bracket + 2));
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
        std::size_t height = 0;               // of the highest value in it
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

    // Raises when something of a height is too much where it is.
    void checkDepth(std::size_t height) const {
        if (depth_ + height > NS::Limits::kDepth) {
            throw Error("values stand too deep within one another");
        }
    }

    static bool isCollection(Kind kind) { return kind != Kind::kForm && kind != Kind::kPair; }

    void open(Kind kind) {
        if (open_.size() > kFramesPerCollection * NS::Limits::kDepth) {
            throw Error("values stand too deep within one another");
        }
        open_.push_back({kind});
        if (isCollection(kind)) {
            ++depth_;
        }
    }

    Frame close() {
        Frame frame = std::move(open_.back());
        open_.pop_back();
        if (isCollection(frame.kind)) {
            --depth_;
        }
        return frame;
    }

    void beginForm(Frame& object, const std::string& form, bool isFirst) {
        if (form == "$class") {
            throw Error("a record, which stands in archives only and is not encoded");
        }
        if (!isFirst) {
            throw Error("\"" + form + "\" stands together with other keys");
        }
        object.kind = Kind::kForm;
        object.form = form;
        --depth_;
    }

    bool endForm(const Frame& object) {
        if (object.form == "$nil") {
            return putNil(object.contents);
        }
        if (object.form == "$ref") {
            return putCollectionOf(object.contents);
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
        return put(NS::Ref<NS::Object>(*object.contents), object.height);
    }

    bool putCollectionOf(const NS::RefPtr<NS::Object>& contents) {
        const auto number = NS::as<NS::Number>(contents);
        const bool isInteger = number && number->type() == NS::Number::Type::kInteger;
        const std::int64_t wanted = isInteger ? number->longLongValue() : 0;
        if (wanted < 1 || wanted > static_cast<std::int64_t>(count_)) {
            throw Error("\"$ref\" takes the number of a collection that stands before it");
        }
        const auto place = static_cast<std::size_t>(wanted - 1);
        if (place >= collections_.size() || !collections_[place].object) {
            throw Error("a collection that holds itself, which is not encoded");
        }
        const auto& [collection, height] = collections_[place];
        return put(NS::Ref<NS::Object>(*collection), height);
    }

    void endPair(Frame& pair) {
        if (pair.elements.size() != 2) {
            throw Error("\"$dictionary\" takes pairs of a key and a value");
        }
        Frame& pairs = open_.back();
        pairs.entries.emplace_back(std::move(pair.elements[0]), std::move(pair.elements[1]));
        pairs.height = std::max(pairs.height, pair.height);
    }

    // A key or member for a message: of a collection only that it is one.
    static std::string shown(const NS::Object& object) {
        const bool isPlain =
            NS::as<NS::String>(&object) != nullptr || NS::as<NS::Number>(&object) != nullptr;
        return isPlain
                   ? ' ' +
                         printable(object.description()->utf8().substr(0, NS::Limits::kQuotedName))
                   : "";
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

    // Keys keep their order, so that the first one that is missing is the one that stands twice.
    NS::Ref<NS::Object> dictionaryOf(const Frame& frame) {
        const auto dictionary =
            withinBudget([&] { return NS::make<NS::Dictionary>(frame.entries, budget_); });
        auto kept = dictionary->begin();
        for (const auto& [key, value] : frame.entries) {
            if (kept == dictionary->end() || kept->first != key) {
                throw Error("the key" + shown(*key) + " stands twice");
            }
            ++kept;
        }
        return dictionary;
    }

    NS::Ref<NS::Object> setOf(const Frame& frame) {
        auto set = withinBudget([&] { return NS::make<NS::Set>(frame.elements, budget_); });
        if (set->count() != frame.elements.size()) {
            const auto doubled = std::ranges::mismatch(frame.elements, *set).in1;
            throw Error("the member" + shown(**doubled) + " stands twice");
        }
        return set;
    }

    bool putNumbered(NS::Ref<NS::Object> collection, const Frame& frame) {
        if (collections_.size() < frame.number) {
            collections_.resize(frame.number);
        }
        const std::size_t height = frame.height + 1;
        collections_[frame.number - 1] = {collection, height};
        return put(std::move(collection), height);
    }

    // Texts, numbers and data have no height: an archive's records hold them as they are.
    bool put(NS::Ref<NS::Object> value) {
        const bool isRecord = NS::as<NS::Null>(value) || NS::as<NS::Date>(value);
        return put(std::move(value), isRecord ? 1 : 0);
    }

    // Within a form, the value is still that of the form.
    bool put(NS::Ref<NS::Object> value, std::size_t height) {
        checkDepth(height);
        if (open_.empty()) {
            root_ = std::move(value);
            return true;
        }
        Frame& parent = open_.back();
        parent.height = std::max(parent.height, height);
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

    struct Collection {
        NS::RefPtr<NS::Object> object;
        std::size_t height = 0; // how many levels of records it comes to in an archive
    };

    // A form, its pairs and one of them, for a dictionary whose keys are no texts.
    static constexpr std::size_t kFramesPerCollection = 3;

    Forms forms_;
    const std::vector<std::size_t>& overflowing_;
    std::size_t numbers_ = 0; // that went by
    NS::EqualityBudget budget_;
    std::vector<Frame> open_;
    std::size_t depth_ = 0;               // how many of them are collections
    std::vector<Collection> collections_; // complete ones, by number less one
    std::uint32_t count_ = 0;
    NS::RefPtr<NS::Object> root_;
};

} // namespace

NS::RefPtr<NS::Object> valueFromJson(std::string_view json, Forms forms) {
    const FiniteNumbers finite = forms == Forms::kNone ? withFiniteNumbers(json) : FiniteNumbers();
    ValueBuilder builder(forms, json.size(), finite.overflowing);
    try {
        const bool isAsGiven = finite.overflowing.empty();
        (void)Json::sax_parse(isAsGiven ? json : finite.json, &builder); // what is wrong raises
    } catch (const NoJson&) {
        throw; // it says the line and the column
    } catch (const Error& error) {
        throw Error(error.what() + (", at " + builder.place()));
    }
    return builder.value();
}

} // namespace Inspection
