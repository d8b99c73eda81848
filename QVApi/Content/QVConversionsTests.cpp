#include "QVApi/Content/QVConversions.h"

#include "Platform/Foundation/Array.h"
#include "Platform/Foundation/Date.h"
#include "Platform/Foundation/Description.h"
#include "Platform/Foundation/Null.h"
#include "Platform/Foundation/Number.h"
#include "Platform/Foundation/Testing/RaisedException.h"
#include "QVApi/Content/QVContentClasses.h"
#include "QVApi/Content/QVContentItem.h"
#include "QVApi/Content/Testing/ContentTables.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

namespace {

using NS::Number;
using NS::str;
using Tests::Conversion;

using Value = NS::RefPtr<NS::Object>;

std::string text(const Value& object) {
    return NS::descriptionOf(object.get())->utf8();
}

// What a conversion makes of a value.
struct Example {
    Value value;
    std::string description;
};

// What a conversion is agreed to do.
struct Behaviour {
    // The description of what it makes of an absent value; nothing when it fails the item.
    std::optional<std::string> absent;
    std::vector<Example> examples;
    // What it cannot read.
    std::vector<Value> refused;
};

const Value kNull = NS::Null::null();
const Value kList = NS::Array::arrayWithObjects({str("1")});
const Value kReply = NS::Dictionary::dictionaryWithEntries({
    {"a", str("1")}
});

Behaviour passThrough() {
    return {
        std::nullopt,
        {{str("text"), "text"},
                   {Number::numberWithDouble(1.5), "1.5"},
                   {Number::numberWithBool(false), "0"},
                   {kNull, "<null>"},
                   {kList, text(kList)},
                   {kReply, text(kReply)}},
        {                }
    };
}

Behaviour longInteger() {
    return {
        "0",
        {{str("2048"), "2048"},
          {str("12.9"), "12"},
          {str("1e3"), "1"},
          {str(" \t\n-7 apples"), "-7"},
          {str("+5"), "5"},
          {str("- 5"), "0"},
          {str("none"), "0"},
          {str(""), "0"},
          {str("9223372036854775807"), "9223372036854775807"},
          {str("9223372036854775808"), "9223372036854775807"},
          {str("-9223372036854775808"), "-9223372036854775808"},
          {str("-9223372036854775809"), "-9223372036854775808"},
          {Number::numberWithLongLong(1LL << 40), "1099511627776"},
          {Number::numberWithDouble(-3.9), "-3"},
          {Number::numberWithDouble(1e300), "9223372036854775807"},
          {Number::numberWithDouble(-1e300), "-9223372036854775808"},
          {Number::numberWithDouble(std::nan("")), "0"},
          {Number::numberWithUnsignedLongLong(1ULL << 63U), "9223372036854775807"},
          {Number::numberWithUnsignedLongLong(~0ULL), "9223372036854775807"},
          {Number::numberWithBool(true), "1"}},
        {kNull,      kList,   kReply}
    };
}

Behaviour intValue() {
    return {
        "0",
        {{str("1"), "1"},
          {str(" 3.7"), "3"},
          {str("1e3"), "1"},
          {str("2147483648"), "2147483647"},
          {str("-2147483649"), "-2147483648"},
          {str("yes"), "0"},
          {Number::numberWithInt(1), "1"},
          {Number::numberWithDouble(2.9), "2"},
          {Number::numberWithLongLong(2147483647), "2147483647"},
          {Number::numberWithLongLong(2147483648), "2147483647"},
          {Number::numberWithLongLong(-2147483649), "-2147483648"},
          {Number::numberWithLongLong(1LL << 32U), "2147483647"},
          {Number::numberWithUnsignedLongLong(~0ULL), "2147483647"},
          {Number::numberWithDouble(1e300), "2147483647"},
          {Number::numberWithDouble(-1e300), "-2147483648"},
          {Number::numberWithDouble(std::nan("")), "0"},
          {Number::numberWithBool(true), "1"}},
        {kNull, kList,  kReply}
    };
}

Behaviour boolean() {
    return {
        "0",
        {{str("1"), "1"},
          {str("yes"), "1"},
          {str("True"), "1"},
          {str(" -007"), "1"},
          {str("0"), "0"},
          {str("no"), "0"},
          {str(""), "0"},
          {Number::numberWithInt(2), "1"},
          {Number::numberWithDouble(0.5), "1"},
          {Number::numberWithLongLong(1LL << 32U), "1"},
          {Number::numberWithDouble(std::nan("")), "1"},
          {Number::numberWithInt(0), "0"}},
        {kNull, kList,  kReply    }
    };
}

Behaviour secondsToDate() {
    return {
        "1970-01-01 00:00:00 +0000",
        {{str("1500000000"), "2017-07-14 02:40:00 +0000"},
          {Number::numberWithDouble(1.9), "1970-01-01 00:00:01 +0000"},
          {Number::numberWithInt(-1), "1969-12-31 23:59:59 +0000"},
          {Number::numberWithDouble(-1.9), "1969-12-31 23:59:59 +0000"},
          {str("1e3"), "1970-01-01 00:00:01 +0000"},
          {str("soon"), "1970-01-01 00:00:00 +0000"}},
        {kNull,        kList,                   kReply            }
    };
}

Behaviour canonicalName() {
    return {
        std::nullopt,
        {{str("plain"), "plain"},
                   {str("\u00E9"), "e\u0301"},
                   {str("e\u0301"), "e\u0301"},
                   {str("\u212B"), "A\u030A"},
                   {str("\uFB01\u2460"), "\uFB01\u2460"},
                   {str(""), ""}},
        {kNull,           kList,            kReply,       Number::numberWithInt(5)}
    };
}

Behaviour list() {
    return {
        "(\n)", {{NS::make<NS::Array>(), "(\n)"}},
         { kNull, kReply, str("text")}
    };
}

Behaviour behaviourOf(Conversion conversion) {
    switch (conversion) {
    case Conversion::kPassThrough:
        return passThrough();
    case Conversion::kLongInteger:
        return longInteger();
    case Conversion::kInt:
        return intValue();
    case Conversion::kBoolean:
        return boolean();
    case Conversion::kSecondsToDate:
        return secondsToDate();
    case Conversion::kCanonicalName:
        return canonicalName();
    default:
        return list();
    }
}

struct Row {
    const QVContentClass* itemClass;
    Tests::ExpectedRow row;
};

// How a failed test shows it.
void PrintTo(const Row& row, std::ostream* stream) {
    *stream << row.itemClass->objectClass.name << ' ' << row.row.property;
}

template <class Wanted>
std::vector<Row> rowsWhere(Wanted&& isWanted) {
    std::vector<Row> rows;
    for (const QVContentClass* const each : qvContentClasses()) {
        for (const auto& row : Tests::expectedClass(each->objectClass.name).mapping) {
            if (isWanted(row)) {
                rows.push_back({each, row});
            }
        }
    }
    return rows;
}

std::string nameOfRow(const testing::TestParamInfo<Row>& each) {
    return std::string(each.param.itemClass->objectClass.name) + "_" + each.param.row.property;
}

// One row of one class's mapping table, in a reply that has all other keys.
class MappingRow : public testing::TestWithParam<Row> {
  protected:
    const QVContentClass& itemClass = *GetParam().itemClass;
    const Tests::ExpectedRow& row = GetParam().row;
    const Behaviour behaviour = behaviourOf(row.conversion);
    const NS::Ref<NS::MutableDictionary> reply =
        Tests::sampleReply(Tests::expectedClass(itemClass.objectClass.name));

    NS::RefPtr<QVContentItem> build() const {
        return QVContentItem::itemWithDict_error(itemClass, *reply, nullptr);
    }
    NS::RefPtr<QVContentItem> buildWith(const Value& value) {
        reply->setObject_forKey(value, row.reply);
        return build();
    }
    Value valueIn(const NS::RefPtr<QVContentItem>& item) const {
        return item ? itemClass.objectClass.propertyForKey(row.property)->get(*item) : nullptr;
    }
};

TEST_P(MappingRow, ConvertsWhatTheReplyHas) {
    for (const Example& each : behaviour.examples) {
        const Value value = valueIn(buildWith(each.value));
        ASSERT_TRUE(value) << each.description;
        EXPECT_TRUE(text(value) == each.description) << text(value) << " " << each.description;
        EXPECT_EQ(value == each.value, row.conversion == Conversion::kPassThrough);
    }
}

TEST_P(MappingRow, HasItsDefaultOrFailsWithoutTheKey) {
    reply->removeObjectForKey(*str(row.reply));
    const auto item = build();
    EXPECT_EQ(static_cast<bool>(item), behaviour.absent.has_value());
    if (behaviour.absent) {
        EXPECT_EQ(text(valueIn(item)), *behaviour.absent);
    }
}

TEST_P(MappingRow, RaisesForWhatItCannotRead) {
    const bool refusesNull = std::ranges::count(behaviour.refused, kNull) == 1;
    EXPECT_EQ(refusesNull, row.conversion != Conversion::kPassThrough);
    for (const Value& each : behaviour.refused) {
        EXPECT_EQ(Tests::nameOfException([&] { (void)buildWith(each); }),
                  NS::kInvalidArgumentException)
            << text(each);
    }
}

TEST_P(MappingRow, IsReadByThePropertysConversion) {
    for (const Example& each : behaviour.examples) {
        EXPECT_EQ(text(QVContentItem::parseValue_forKey_error(itemClass, each.value, row.property,
                                                              nullptr)),
                  each.description);
    }
    const auto absent =
        QVContentItem::parseValue_forKey_error(itemClass, nullptr, row.property, nullptr);
    EXPECT_EQ(text(absent), behaviour.absent.value_or("(null)"));
}

INSTANTIATE_TEST_SUITE_P(, MappingRow,
                         testing::ValuesIn(rowsWhere([](const auto&) { return true; })), nameOfRow);

// A row whose values are lists of items.
class ListRow : public MappingRow {
  protected:
    // The row's list with elements around a good one.
    NS::RefPtr<NS::MutableArray> listOf(const std::vector<Value>& elements) {
        const auto list = NS::make<NS::MutableArray>();
        for (const Value& each : elements) {
            list->addObject(each);
        }
        return NS::as<NS::MutableArray>(valueIn(buildWith(list)));
    }
    Value goodElement() const { return Tests::sampleReply(Tests::expectedClass(row.elementClass)); }
    // How many items there are with an element between two good ones; nothing without a list.
    std::optional<std::size_t> countAround(const Value& element) {
        const auto list = listOf({goodElement(), element, goodElement()});
        return list ? std::optional(list->count()) : std::nullopt;
    }
    void expectRuleFor(const Value& bad) {
        switch (row.conversion) {
        case Conversion::kListThatFails:
            EXPECT_EQ(countAround(bad), std::nullopt) << text(bad);
            break;
        case Conversion::kListThatSkips:
            EXPECT_EQ(countAround(bad), 2U) << text(bad);
            break;
        default:
            EXPECT_EQ(countAround(bad), 3U) << text(bad);
        }
    }
    std::string classOfItems() const {
        return row.conversion == Conversion::kSharingUsers ? "QVFolderItem" : row.elementClass;
    }
};

TEST_P(ListRow, HoldsAnItemForEachElementInOrder) {
    const auto first = Tests::sampleReply(Tests::expectedClass(row.elementClass));
    first->setObject_forKey(str("first"), "Name");
    const auto list = listOf({first, goodElement(), goodElement()});
    ASSERT_TRUE(list);
    ASSERT_EQ(list->count(), 3U);
    EXPECT_EQ(text(list->objectAtIndex(0)->valueForKey(*str("name"))), "first");
    EXPECT_EQ(text(list->objectAtIndex(1)->valueForKey(*str("name"))), "the name");
    for (const NS::Ref<NS::Object>& each : *list) {
        EXPECT_EQ(each->objectClass().name, classOfItems());
    }
}

TEST_P(ListRow, FollowsItsRuleForAnElementThatMakesNoItem) {
    const Value withoutKeys = NS::make<NS::Dictionary>();
    for (const Value& bad : {withoutKeys, kNull, Value(str("text")), kList}) {
        expectRuleFor(bad);
    }
}

// Nothing raises for a bad element, though it would for the same value in a reply of its own. What
// is passed through is never bad, not even the null object.
TEST_P(ListRow, FollowsItsRuleForAnElementWithAValueThatCannotBeRead) {
    for (const auto& elementRow : Tests::expectedClass(row.elementClass).mapping) {
        const auto element = Tests::sampleReply(Tests::expectedClass(row.elementClass));
        for (const Value& each : behaviourOf(elementRow.conversion).refused) {
            element->setObject_forKey(each, elementRow.reply);
            SCOPED_TRACE(elementRow.property + " " + text(each));
            expectRuleFor(element);
        }
        if (elementRow.conversion == Conversion::kPassThrough) {
            element->setObject_forKey(kNull, elementRow.reply);
            EXPECT_EQ(countAround(element), 3U) << elementRow.property;
        }
    }
}

// The list is bad there, not an element.
TEST_P(ListRow, RaisesForWhatIsNoList) {
    for (const Value& each : {kNull, kReply, Value(str("text")), Value(Number::numberWithInt(1))}) {
        EXPECT_EQ(Tests::nameOfException([&] { (void)buildWith(each); }),
                  NS::kInvalidArgumentException)
            << text(each);
    }
}

INSTANTIATE_TEST_SUITE_P(, ListRow, testing::ValuesIn(rowsWhere([](const auto& row) {
                             return !row.elementClass.empty();
                         })),
                         nameOfRow);

TEST(Conversions, MakeNumbersOfTheirTypes) {
    const Value one = str("1");
    const auto typeOf = [](const Value& value) {
        return NS::cast<Number>(value)->type();
    };
    EXPECT_EQ(typeOf(qvLongInteger(one, nullptr)), Number::Type::kInteger);
    EXPECT_EQ(typeOf(qvInt(one, nullptr)), Number::Type::kInteger);
    EXPECT_EQ(typeOf(qvBoolean(one, nullptr)), Number::Type::kBoolean);
    EXPECT_EQ(typeOf(qvBoolean(nullptr, nullptr)), Number::Type::kBoolean);
}

TEST(Conversions, StopAtTheLimitsOfSecondsToo) {
    const std::pair<Value, double> rows[] = {
        {str("99999999999999999999"),         0x1p63 },
        {str("-99999999999999999999"),        -0x1p63},
        {Number::numberWithDouble(1e300),     0x1p63 },
        {Number::numberWithDouble(-1e300),    -0x1p63},
        {Number::numberWithDouble(-INFINITY), -0x1p63},
        {Number::numberWithDouble(NAN),       0      },
    };
    for (const auto& [value, seconds] : rows) {
        EXPECT_TRUE(qvSecondsToDate(value, nullptr)
                        ->isEqual(NS::Date::dateWithTimeIntervalSince1970(seconds).get()))
            << text(value);
    }
}

TEST(Conversions, MakeANewNameAlsoWhereNothingChanges) {
    const Value name = str("plain");
    EXPECT_NE(qvCanonicalName(name, nullptr), name);
}

TEST(Conversions, LeaveAListAsItIs) {
    const auto list = NS::make<NS::MutableArray>();
    list->addObject(kReply);
    const auto items =
        qvItemsOfList(QVContentItem::kContentClass, QVFailedElement::kIsSkipped, list, nullptr);
    EXPECT_NE(items, list);
    EXPECT_EQ(list->objectAtIndex(0), kReply);
}

} // namespace
