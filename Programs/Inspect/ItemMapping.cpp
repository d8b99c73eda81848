#include "Programs/Inspect/ItemMapping.h"

#include "Platform/Foundation/Description.h"
#include "Platform/Foundation/Exception.h"
#include "QVApi/Content/QVContentClasses.h"

#include <algorithm>
#include <utility>

namespace Inspection {

namespace {

std::string reasonOf(const NS::Exception& exception) {
    return NS::descriptionOf(exception.reason().get())->utf8();
}

// What becomes of a value: something, nothing, or an exception.
struct Outcome {
    bool isMade = false;
    bool isRaised = false;
    std::string reason = {};
};

template <class Make>
Outcome outcomeOf(Make&& make) {
    try {
        return {.isMade = static_cast<bool>(make())};
    } catch (const NS::Exception& exception) {
        return {.isRaised = true, .reason = reasonOf(exception)};
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
            NS::RefPtr<NS::Object> raw;
            const Outcome outcome = outcomeOf([&] {
                raw = reply.valueForKeyPath(*NS::str(row.reply));
                return QVContentItem::parseValue_forKey_error(itemClass, raw, row.property,
                                                              &error_);
            });
            Place here = place.valueOf(row);
            if (outcome.isMade) {
                here.consequence = "; the entry is left out";
            }
            const bool isOfElements =
                explainElements(qvConverterFor(itemClass, row.property), raw, here);
            if (!outcome.isMade && !isOfElements) {
                const char* const nothing = raw ? "its value cannot be used" : "it is missing";
                add(here, outcome.isRaised ? outcome.reason : nothing);
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
            add(place, "it is no object");
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
    const Outcome outcome = outcomeOf([&] {
        item = QVContentItem::itemWithDict_error(itemClass, reply, &error);
        return item;
    });
    if (!outcome.isMade) {
        Explanation(failures).explain(itemClass, reply, {});
    }
    return item;
}

} // namespace Inspection
