#include "QVApi/Content/QVConversions.h"

#include "Platform/Foundation/Array.h"
#include "Platform/Foundation/Date.h"
#include "Platform/Foundation/Number.h"
#include "Platform/Foundation/ObjectBatch.h"
#include "QVApi/Content/QVContentItem.h"

#include <utility>

namespace {

NS::RefPtr<NS::Object> passThrough(const NS::RefPtr<NS::Object>& value, NS::RefPtr<NS::Error>*) {
    return value;
}

NS::RefPtr<NS::Object> longInteger(const NS::RefPtr<NS::Object>& value, NS::RefPtr<NS::Error>*) {
    return NS::Number::numberWithLongLong(NS::longLongValue(value));
}

NS::RefPtr<NS::Object> intNumber(const NS::RefPtr<NS::Object>& value, NS::RefPtr<NS::Error>*) {
    return NS::Number::numberWithInt(NS::intValue(value));
}

NS::RefPtr<NS::Object> boolean(const NS::RefPtr<NS::Object>& value, NS::RefPtr<NS::Error>*) {
    return NS::Number::numberWithBool(NS::boolValue(value));
}

NS::RefPtr<NS::Object> secondsToDate(const NS::RefPtr<NS::Object>& value, NS::RefPtr<NS::Error>*) {
    return NS::Date::dateWithTimeIntervalSince1970(static_cast<double>(NS::longLongValue(value)));
}

NS::RefPtr<NS::Object> canonicalName(const NS::RefPtr<NS::Object>& value, NS::RefPtr<NS::Error>*) {
    const auto name = NS::cast<NS::String>(value);
    return name ? NS::RefPtr<NS::Object>(name->decomposedStringWithCanonicalMapping()) : nullptr;
}

bool isAnything(const NS::Object&) {
    return true;
}

bool isText(const NS::Object& value) {
    return value.isKindOfClass(NS::String::kClass);
}

bool isNumberOrText(const NS::Object& value) {
    return value.isKindOfClass(NS::Number::kClass) || isText(value);
}

constexpr const char* kNumberOrText = "a number or a text";

} // namespace

constinit const QVConverter qvPassThrough{&passThrough, &isAnything, "anything"};
constinit const QVConverter qvLongInteger{&longInteger, &isNumberOrText, kNumberOrText};
constinit const QVConverter qvInt{&intNumber, &isNumberOrText, kNumberOrText};
constinit const QVConverter qvBoolean{&boolean, &isNumberOrText, kNumberOrText};
constinit const QVConverter qvSecondsToDate{&secondsToDate, &isNumberOrText, kNumberOrText};
constinit const QVConverter qvCanonicalName{&canonicalName, &isText, "a text"};

bool qvIsList(const NS::Object& value) {
    return value.isKindOfClass(NS::Array::kClass);
}

NS::RefPtr<NS::Object> qvItemsOfList(const QVContentClass& elementClass, QVFailedElement rule,
                                     const NS::RefPtr<NS::Object>& value,
                                     NS::RefPtr<NS::Error>* error) {
    const auto list = NS::cast<NS::Array>(value);
    if (!list) {
        return NS::make<NS::MutableArray>();
    }
    const NS::ObjectBatch batch;
    std::vector<NS::Ref<NS::Object>> items;
    items.reserve(list->count());
    for (const NS::Ref<NS::Object>& element : *list) {
        if (const auto item = QVContentItem::itemWithElement_error(elementClass, *element, error)) {
            items.emplace_back(*item);
        } else if (rule == QVFailedElement::kFailsTheList) {
            return nullptr;
        }
    }
    return NS::make<NS::MutableArray>(std::move(items));
}
