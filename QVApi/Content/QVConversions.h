#pragma once

#include "QVApi/Content/QVContentClass.h"

// The conversions of a reply's raw values that classes name in their tables. What they do not read,
// the null object among it, raises NSInvalidArgumentException.

// The value itself, whatever it is; nil for nil, so that a property without another conversion is
// mandatory.
extern const QVConverter qvPassThrough;

// A number with the longLongValue of a number or text; 0 for nil.
extern const QVConverter qvLongInteger;

// A number with the intValue of a number or text; 0 for nil.
extern const QVConverter qvInt;

// A boolean number with the boolValue of a number or text; false for nil.
extern const QVConverter qvBoolean;

// The date that a number or text of whole seconds is after 1970-01-01 00:00:00 UTC; that moment for
// nil.
extern const QVConverter qvSecondsToDate;

// A text in Unicode's canonical decomposition, always a new one; nil for nil.
extern const QVConverter qvCanonicalName;

// Whether a value is a list.
bool qvIsList(const NS::Object& value);

// What an element that makes no item (QVContentItem::itemWithElement_error()) does to its list.
enum class QVFailedElement : std::uint8_t { kIsSkipped, kFailsTheList };

// A new mutable array with an item of the class for each element of the array, in order; an empty
// one for nil.
NS::RefPtr<NS::Object> qvItemsOfList(const QVContentClass& elementClass, QVFailedElement rule,
                                     const NS::RefPtr<NS::Object>& value,
                                     NS::RefPtr<NS::Error>* error);

// The same as a conversion, and as a row of a table.
template <class Item, QVFailedElement rule>
inline constexpr QVConverter kQVListOf{
    [](const NS::RefPtr<NS::Object>& value, NS::RefPtr<NS::Error>* error) {
        return qvItemsOfList(Item::kContentClass, rule, value, error);
    },
    &qvIsList, "a list", &Item::kContentClass};
template <class Item, QVFailedElement rule>
constexpr QVConversion qvListOf(std::string_view property) {
    return {property, &kQVListOf<Item, rule>};
}
