#include "QVApi/Content/QVConversions.h"

#include "Platform/Foundation/Array.h"
#include "Platform/Foundation/Date.h"
#include "Platform/Foundation/Number.h"
#include "QVApi/Content/QVContentItem.h"

#include <utility>

NS::RefPtr<NS::Object> qvPassThrough(const NS::RefPtr<NS::Object>& value, NS::RefPtr<NS::Error>*) {
    return value;
}

NS::RefPtr<NS::Object> qvLongInteger(const NS::RefPtr<NS::Object>& value, NS::RefPtr<NS::Error>*) {
    return NS::Number::numberWithLongLong(NS::longLongValue(value));
}

NS::RefPtr<NS::Object> qvInt(const NS::RefPtr<NS::Object>& value, NS::RefPtr<NS::Error>*) {
    return NS::Number::numberWithInt(NS::intValue(value));
}

NS::RefPtr<NS::Object> qvBoolean(const NS::RefPtr<NS::Object>& value, NS::RefPtr<NS::Error>*) {
    return NS::Number::numberWithBool(NS::boolValue(value));
}

NS::RefPtr<NS::Object> qvSecondsToDate(const NS::RefPtr<NS::Object>& value,
                                       NS::RefPtr<NS::Error>*) {
    return NS::Date::dateWithTimeIntervalSince1970(static_cast<double>(NS::longLongValue(value)));
}

NS::RefPtr<NS::Object> qvCanonicalName(const NS::RefPtr<NS::Object>& value,
                                       NS::RefPtr<NS::Error>*) {
    const auto name = NS::cast<NS::String>(value);
    return name ? NS::RefPtr<NS::Object>(name->decomposedStringWithCanonicalMapping()) : nullptr;
}

NS::RefPtr<NS::Object> qvItemsOfList(const QVContentClass& elementClass, QVFailedElement rule,
                                     const NS::RefPtr<NS::Object>& value,
                                     NS::RefPtr<NS::Error>* error) {
    const auto list = NS::cast<NS::Array>(value);
    if (!list) {
        return NS::make<NS::MutableArray>();
    }
    std::vector<NS::Ref<NS::Object>> items;
    items.reserve(list->count());
    for (const NS::Ref<NS::Object>& element : *list) {
        const auto* reply = NS::as<NS::Dictionary>(element.get());
        const auto item = reply != nullptr
                              ? QVContentItem::itemWithDict_error(elementClass, *reply, error)
                              : nullptr;
        if (item) {
            items.emplace_back(*item);
        } else if (rule == QVFailedElement::kFailsTheList) {
            return nullptr;
        }
    }
    return NS::make<NS::MutableArray>(std::move(items));
}
