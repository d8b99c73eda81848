#pragma once

#include "QVApi/Content/QVContentClass.h"

// The conversions of a reply's raw values that classes name in their tables. An absent value is
// nil. A value of a kind that a conversion cannot read, the null object among them, raises
// NSInvalidArgumentException.

// The value itself, whatever it is; nil for nil, so that a property without another conversion is
// mandatory.
NS::RefPtr<NS::Object> qvPassThrough(const NS::RefPtr<NS::Object>& value, NS::RefPtr<NS::Error>*);

// A number with the value's longLongValue; 0 for nil.
NS::RefPtr<NS::Object> qvLongInteger(const NS::RefPtr<NS::Object>& value, NS::RefPtr<NS::Error>*);

// A number with the value's intValue; 0 for nil.
NS::RefPtr<NS::Object> qvInt(const NS::RefPtr<NS::Object>& value, NS::RefPtr<NS::Error>*);

// A boolean number with the value's boolValue; false for nil.
NS::RefPtr<NS::Object> qvBoolean(const NS::RefPtr<NS::Object>& value, NS::RefPtr<NS::Error>*);

// The date as many whole seconds after 1970-01-01 00:00:00 UTC; that moment for nil.
NS::RefPtr<NS::Object> qvSecondsToDate(const NS::RefPtr<NS::Object>& value, NS::RefPtr<NS::Error>*);

// The text in Unicode's canonical decomposition, always a new one; nil for nil.
NS::RefPtr<NS::Object> qvCanonicalName(const NS::RefPtr<NS::Object>& value, NS::RefPtr<NS::Error>*);

// What an element that makes no item, also one that is no dictionary, does to its list.
enum class QVFailedElement : std::uint8_t { kIsSkipped, kFailsTheList };

// A new mutable array with an item of the class for each element of the array, in order; an empty
// one for nil.
NS::RefPtr<NS::Object> qvItemsOfList(const QVContentClass& elementClass, QVFailedElement rule,
                                     const NS::RefPtr<NS::Object>& value,
                                     NS::RefPtr<NS::Error>* error);

// The same as a row of a table.
template <class Item, QVFailedElement rule>
constexpr QVConversion qvListOf(std::string_view property) {
    return {property,
            [](const NS::RefPtr<NS::Object>& value, NS::RefPtr<NS::Error>* error) {
                return qvItemsOfList(Item::kContentClass, rule, value, error);
            },
            &Item::kContentClass};
}
