#pragma once

#include "QVApi/Content/QVContentClass.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace Tests {

// What a mapping does to a raw value, as the service's records are agreed on.
enum class Conversion : std::uint8_t {
    kPassThrough,
    kLongInteger,
    kInt,
    kBoolean,
    kSecondsToDate,
    kCanonicalName,
    kListThatSkips,
    kListThatFails,
    kSharingUsers,
};

struct ExpectedRow {
    std::string property;
    std::string reply;
    Conversion conversion;
    std::string elementClass; // of a list
};

// What an initialiser gives a property, as its description.
struct ExpectedValue {
    std::string property;
    std::string description;
};

// One class as it is agreed on with the service and with other programs, written down apart from
// the code that is to have it so.
struct ExpectedClass {
    std::string name;
    std::string superclass = {};
    std::vector<std::string> properties = {}; // its own, as declared
    std::vector<ExpectedRow> mapping = {};    // the whole table, with what it inherits
    std::vector<std::string> archived = {};   // the same, beside timeReceived
    std::vector<ExpectedValue> initialValues = {};
};

// All of them, superclasses first.
const std::vector<ExpectedClass>& expectedClasses();
// The row of a class's name.
const ExpectedClass& expectedClass(std::string_view name);

// Every property of a class, its superclasses' first.
std::vector<const NS::Property*> allPropertiesOf(const QVContentClass& itemClass);

// A reply that a class makes an item from, with a value under each key of its table.
NS::Ref<NS::MutableDictionary> sampleReply(const ExpectedClass& itemClass);
// A value of a reply that a row's conversion takes.
NS::Ref<NS::Object> sampleValue(const ExpectedRow& row);

} // namespace Tests
