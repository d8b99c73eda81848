#include "Programs/Inspect/ItemMapping.h"

#include "Platform/Foundation/KeyedArchiver.h"
#include "Platform/Foundation/Null.h"
#include "Programs/Inspect/ArchiveJson.h"
#include "Programs/Inspect/ItemJson.h"
#include "QVApi/Content/QVAnonymousItem.h"
#include "QVApi/Content/QVContentClasses.h"
#include "QVApi/Content/QVUserInfoItem.h"

#include <gtest/gtest.h>

#include <sstream>

namespace {

using Inspection::MappingFailure;

class ItemMapping : public testing::Test {
  protected:
    NS::RefPtr<QVContentItem> map() {
        return Inspection::mapReply(QVUserInfoItem::kContentClass, *reply, failures);
    }
    static std::string shown(const NS::Ref<QVContentItem>& item) {
        std::ostringstream text;
        Inspection::printItem(item, text);
        return text.str();
    }

    NS::Ref<NS::MutableDictionary> reply = NS::make<NS::MutableDictionary>();
    std::vector<MappingFailure> failures;
};

TEST_F(ItemMapping, FindsEveryClassByItsName) {
    for (const QVContentClass* const each : qvContentClasses()) {
        EXPECT_EQ(Inspection::contentClassNamed(each->objectClass.name), each);
    }
    EXPECT_EQ(Inspection::contentClassNamed("NSString"), nullptr);
}

TEST_F(ItemMapping, GivesTheRecordOfAReply) {
    reply->setObject_forKey(NS::str("Basic"), "UserPlan");
    const auto item = map();
    ASSERT_TRUE(item);
    EXPECT_TRUE(failures.empty());
    EXPECT_EQ(NS::as<QVUserInfoItem>(item)->plan()->description()->utf8(), "Basic");
}

TEST_F(ItemMapping, NamesEveryKeyThatFails) {
    reply->setObject_forKey(NS::Null::null(), "MaxStorage");
    reply->setObject_forKey(NS::make<NS::Array>(), "BwUsed");
    EXPECT_FALSE(map());
    ASSERT_EQ(failures.size(), 3U);
    EXPECT_EQ(failures[0].reply, "MaxStorage");
    EXPECT_EQ(failures[0].property, "storageMax");
    EXPECT_NE(failures[0].reason.find("NSNull"), std::string::npos);
    EXPECT_EQ(failures[1].reply, "BwUsed");
    EXPECT_EQ(failures[2].reply, "UserPlan");
    EXPECT_EQ(failures[2].reason, "it is missing");
}

TEST_F(ItemMapping, IsShownAsItsArchiveIs) {
    reply->setObject_forKey(NS::str("Basic"), "UserPlan");
    const NS::Ref<QVContentItem> item(*map());
    std::ostringstream archived;
    Inspection::printArchive(NS::KeyedArchiver::archivedDataWithRootObject(item)->bytes(),
                             archived);
    EXPECT_EQ(shown(item), archived.str());
    EXPECT_NE(archived.str().find("\"trashCount\": {\"$nil\": true}"), std::string::npos);
}

TEST_F(ItemMapping, IsShownWithWhatNoArchiveKeeps) {
    const auto item = NS::make<QVAnonymousItem>();
    const auto list = NS::Array::arrayWithObjects({NS::str("x")});
    const auto response = NS::make<NS::MutableDictionary>();
    response->setObject_forKey(list, "a");
    response->setObject_forKey(list, "$b");
    item->setResponse(response);
    EXPECT_EQ(shown(item), "{\n  \"$class\": \"QVAnonymousItem\",\n  \"timeReceived\": 0.0,\n"
                           "  \"response\": {\n    \"a\": [\n      \"x\"\n    ],\n"
                           "    \"$$b\": {\"$ref\": 3}\n  }\n}\n");
}

} // namespace
