#include "Platform/Foundation/Testing/ArchivedRecords.h"

#include "Platform/Foundation/KeyedArchiver.h"
#include "Platform/Foundation/KeyedUnarchiver.h"

namespace Tests {

namespace {

constexpr auto kProperties = NS::propertiesOf<ArchivedRecord>();
const NS::ClassRegistration kRegistration(ArchivedRecord::kClass);

NS::Ref<NS::Object> createRecord() {
    return NS::make<ArchivedRecord>();
}

} // namespace

constinit const NS::Class ArchivedRecord::kClass{
    .name = "ArchivedRecord",
    .superclass = &NS::Object::kClass,
    .properties = kProperties,
    .createForCoder = &createRecord,
};
constinit const NS::Class UnknownRecord::kClass{.name = "UnknownRecord",
                                                .superclass = &NS::Object::kClass};

void ArchivedRecord::encodeWithCoder(NS::KeyedArchiver& coder) const {
    coder.encodeObject_forKey(first(), "first");
    coder.encodeObject_forKey(second(), "$class");
    coder.encodeDouble_forKey(time(), "time");
}

void ArchivedRecord::initWithCoder(NS::KeyedUnarchiver& coder) {
    setFirst(coder.decodeObjectForKey("first"));
    setSecond(coder.decodeObjectForKey("$class"));
    setTime(coder.decodeDoubleForKey("time"));
}

} // namespace Tests
