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

// Goes from a reply into the elements of its lists, to the keys that a record fails for.
class Explanation {
  public:
    explicit Explanation(std::vector<MappingFailure>& failures) noexcept : failures_(failures) {}

    void explain(const QVContentClass& itemClass, const NS::Dictionary& reply,
                 const std::string& place) {
        for (const QVMapping& row : qvMappingOf(itemClass)) {
            NS::RefPtr<NS::Object> raw;
            Outcome outcome = outcomeOf([&] {
                raw = reply.valueForKeyPath(*NS::str(row.reply));
                return QVContentItem::parseValue_forKey_error(itemClass, raw, row.property,
                                                              &error_);
            });
            if (!outcome.isMade && !explainElements(itemClass, row, raw, outcome, place)) {
                const char* const nothing = raw ? "its value cannot be used" : "it is missing";
                add(row, place, outcome.isRaised ? outcome.reason : nothing);
            }
        }
    }

  private:
    // False when no element is the reason. An element that makes nothing is one where the list as a
    // whole makes nothing; otherwise it is passed over.
    bool explainElements(const QVContentClass& itemClass, const QVMapping& row,
                         const NS::RefPtr<NS::Object>& raw, const Outcome& list,
                         const std::string& place) {
        const auto* const elementClass = qvConversionFor(itemClass, row.property).elementClass;
        const auto elements = elementClass != nullptr ? NS::as<NS::Array>(raw) : nullptr;
        const std::size_t before = failures_.size();
        for (std::size_t i = 0; elements && i < elements->count(); ++i) {
            const std::string element =
                place + std::string(row.reply) + '[' + std::to_string(i) + ']';
            const auto reply =
                NS::as<NS::Dictionary>(NS::RefPtr<NS::Object>(elements->objectAtIndex(i)));
            if (reply) {
                explainElement(*elementClass, *reply, list, element + '.');
            } else if (!list.isRaised) {
                failures_.push_back({std::string(row.property), element, "it is no object"});
            }
        }
        return failures_.size() != before;
    }

    void explainElement(const QVContentClass& elementClass, const NS::Dictionary& reply,
                        const Outcome& list, const std::string& place) {
        const Outcome outcome = outcomeOf(
            [&] { return QVContentItem::itemWithDict_error(elementClass, reply, &error_); });
        if (!outcome.isMade && outcome.isRaised == list.isRaised) {
            explain(elementClass, reply, place);
        }
    }

    void add(const QVMapping& row, const std::string& place, const std::string& reason) {
        failures_.push_back({std::string(row.property), place + std::string(row.reply), reason});
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
    Explanation(failures).explain(itemClass, reply, "");
    NS::RefPtr<NS::Error> error;
    return failures.empty() ? QVContentItem::itemWithDict_error(itemClass, reply, &error) : nullptr;
}

} // namespace Inspection
