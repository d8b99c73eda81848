#include "Programs/Inspect/ItemMapping.h"

#include "Platform/Foundation/Exception.h"
#include "Platform/Foundation/Null.h"
#include "Platform/Foundation/Number.h"
#include "QVApi/Content/QVContentClasses.h"

#include <algorithm>
#include <utility>

namespace Inspection {

namespace {

// What a reply's JSON can hold, as a person calls it.
constexpr std::pair<const NS::Class*, const char*> kKinds[] = {
    {&NS::Null::kClass,       "null"     },
    {&NS::Number::kClass,     "a number" },
    {&NS::String::kClass,     "a text"   },
    {&NS::Array::kClass,      "a list"   },
    {&NS::Dictionary::kClass, "an object"},
};

std::string kindOf(const NS::Object& value) {
    if (const auto* const number = NS::as<NS::Number>(&value)) {
        return number->type() == NS::Number::Type::kBoolean ? "a boolean" : "a number";
    }
    for (const auto& [kind, name] : kKinds) {
        if (value.isKindOfClass(*kind)) {
            return name;
        }
    }
    return value.objectClass().name;
}

// Why a value becomes none of its record's.
std::string reasonFor(const QVConverter& converter, const NS::RefPtr<NS::Object>& raw) {
    if (!raw) {
        return "it is missing";
    }
    return converter.reads(*raw)
               ? "its value cannot be used"
               : std::string("takes ") + converter.takes + ", has " + kindOf(*raw);
}

// Whether something comes of it: not nothing, and no exception.
template <class Make>
bool isMade(Make&& make) {
    try {
        return static_cast<bool>(make());
    } catch (const NS::Exception&) {
        return false;
    }
}

// Where a value stands: in the record, and in the reply.
struct Place {
    std::string property;
    std::string reply;
    // What is said of a failure there beside its reason.
    std::string consequence = {};

    Place valueOf(const QVMapping& row) const {
        return {property + std::string(row.property), reply + std::string(row.reply), consequence};
    }
    Place element(std::size_t index) const {
        const std::string brackets = '[' + std::to_string(index) + ']';
        return {property + brackets, reply + brackets, consequence};
    }
    // Where the values of a record that stands here begin.
    Place inside() const { return {property + '.', reply + '.', consequence}; }
};

// Goes from a reply into the elements of its lists, to all the keys that fail.
class Explanation {
  public:
    explicit Explanation(std::vector<MappingFailure>& failures) noexcept : failures_(failures) {}

    void explain(const QVContentClass& itemClass, const NS::Dictionary& reply, const Place& place) {
        for (const QVMapping& row : qvMappingOf(itemClass)) {
            const QVConverter& converter = qvConverterFor(itemClass, row.property);
            NS::RefPtr<NS::Object> raw;
            const bool isUsed = isMade([&] {
                raw = reply.valueForKeyPath(*NS::str(row.reply));
                return converter(raw, &error_);
            });
            Place here = place.valueOf(row);
            if (isUsed) {
                here.consequence = "; the entry is left out";
            }
            const bool isOfElements = explainElements(converter, raw, here);
            if (!isUsed && !isOfElements) {
                add(here, reasonFor(converter, raw));
            }
        }
    }

  private:
    // False when no element fails.
    bool explainElements(const QVConverter& converter, const NS::RefPtr<NS::Object>& raw,
                         const Place& place) {
        const auto elements = converter.elementClass != nullptr ? NS::as<NS::Array>(raw) : nullptr;
        const std::size_t before = failures_.size();
        for (std::size_t i = 0; elements && i < elements->count(); ++i) {
            explainElement(*converter.elementClass, *elements->objectAtIndex(i), place.element(i));
        }
        return failures_.size() != before;
    }

    void explainElement(const QVContentClass& elementClass, const NS::Object& element,
                        const Place& place) {
        const auto* const reply = NS::as<NS::Dictionary>(&element);
        if (reply == nullptr) {
            add(place, "takes an object, has " + kindOf(element));
        } else if (!QVContentItem::itemWithElement_error(elementClass, element, &error_)) {
            explain(elementClass, *reply, place.inside());
        }
    }

    void add(const Place& place, const std::string& reason) {
        failures_.push_back({place.property, place.reply, reason + place.consequence});
    }

    std::vector<MappingFailure>& failures_;
    NS::RefPtr<NS::Error> error_; // which conversions want a place for, and leave as it is
};

} // namespace

const QVContentClass* contentClassNamed(std::string_view name) {
    const auto classes = qvContentClasses();
    const auto found = std::ranges::find_if(
        classes, [&](const QVContentClass* each) { return each->objectClass.name == name; });
    return found == classes.end() ? nullptr : *found;
}

NS::RefPtr<QVContentItem> mapReply(const QVContentClass& itemClass, const NS::Dictionary& reply,
                                   std::vector<MappingFailure>& failures) {
    NS::RefPtr<QVContentItem> item;
    NS::RefPtr<NS::Error> error;
    const bool isWhole = isMade([&] {
        item = QVContentItem::itemWithDict_error(itemClass, reply, &error);
        return item;
    });
    if (!isWhole) {
        Explanation(failures).explain(itemClass, reply, {});
    }
    return item;
}

} // namespace Inspection
