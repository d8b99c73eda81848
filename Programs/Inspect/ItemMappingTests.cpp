#include "Programs/Inspect/ItemMapping.h"

#include "Platform/Foundation/KeyedArchiver.h"
#include "Platform/Foundation/Null.h"
#include "Programs/Inspect/ArchiveJson.h"
#include "Programs/Inspect/ItemJson.h"
#include "QVApi/Content/QVAnonymousItem.h"
#include "QVApi/Content/QVContentClasses.h"
#include "QVApi/Content/QVFolderItem.h"
#include "QVApi/Content/QVFolderListItem.h"
#include "QVApi/Content/QVSharingUsersItem.h"
#include "QVApi/Content/QVUserInfoItem.h"
#include "QVApi/Content/Testing/ContentTables.h"

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

    static std::string shownArchiveOf(const NS::Ref<QVContentItem>& item) {
        std::ostringstream text;
        Inspection::printArchive(NS::KeyedArchiver::archivedDataWithRootObject(item)->bytes(),
                                 text);
        return text.str();
    }
    // The keys that fail, a blank behind each.
    std::string keys() const {
        std::string all;
        for (const MappingFailure& each : failures) {
            all += each.reply + ' ';
        }
        return all;
    }
    // What is told of them, a line each.
    std::string lines() const {
        std::string all;
        for (const MappingFailure& each : failures) {
            all += each.reply + ' ' + each.property + ' ' + each.reason + '\n';
        }
        return all;
    }
    // Puts a list of a file and one whose size is null into the reply.
    void putMalformedFile() {
        const auto file = NS::make<NS::MutableDictionary>();
        file->setObject_forKey(NS::str("1"), "FileId");
        file->setObject_forKey(NS::str("n"), "Name");
        const auto malformed = file->mutableCopy();
        malformed->setObject_forKey(NS::Null::null(), "Size");
        reply->setObject_forKey(NS::Array::arrayWithObjects({file, malformed}), "Files");
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

// In the same words each time: nothing in them depends on where the values are in memory.
TEST_F(ItemMapping, SaysOfEveryKeyThatFailsWhatItTakesAndWhatItHas) {
    reply->setObject_forKey(NS::Null::null(), "MaxStorage");
    reply->setObject_forKey(NS::make<NS::Array>(), "BwUsed");
    reply->setObject_forKey(NS::make<NS::Dictionary>(), "BwMax");
    EXPECT_FALSE(map());
    EXPECT_EQ(lines(), "MaxStorage storageMax takes a number or a text, has null\n"
                       "BwUsed bandwidthUsed takes a number or a text, has a list\n"
                       "BwMax bandwidthMax takes a number or a text, has an object\n"
                       "UserPlan plan it is missing\n");
}

TEST_F(ItemMapping, SaysSoOfNamesAndListsToo) {
    reply->setObject_forKey(NS::Number::numberWithBool(true), "Name");
    EXPECT_FALSE(Inspection::mapReply(QVFolderItem::kContentClass, *reply, failures));
    reply->setObject_forKey(NS::Number::numberWithInt(1), "Name");
    EXPECT_FALSE(Inspection::mapReply(QVFolderItem::kContentClass, *reply, failures));
    EXPECT_EQ(lines(), "FolderID identifier it is missing\n"
                       "Name name takes a text, has a boolean\n"
                       "FolderID identifier it is missing\n"
                       "Name name takes a text, has a number\n");
    failures.clear();
    reply->setObject_forKey(NS::str("1"), "ResponseType");
    reply->setObject_forKey(NS::str("x"), "SharedUsers");
    EXPECT_FALSE(
        Inspection::mapReply(QVSharedUsersFolderListItem::kContentClass, *reply, failures));
    EXPECT_EQ(lines(), "SharedUsers folders takes a list, has a text\n");
}

// The first element is sound, the second lacks two keys, and the third is no record at all.
TEST_F(ItemMapping, NamesTheKeysOfElementsThatFailTheirList) {
    const auto user = NS::Dictionary::dictionaryWithEntries({
        {"SharingID", NS::str("1")},
        {"Name",      NS::str("a")},
        {"ShareMode", NS::str("2")}
    });
    const auto nameless = NS::Dictionary::dictionaryWithEntries({
        {"ShareMode", NS::str("2")}
    });
    reply->setObject_forKey(NS::Array::arrayWithObjects({user, nameless, NS::Null::null()}),
                            "ShareWithUser");
    EXPECT_FALSE(Inspection::mapReply(QVSharingUsersItem::kContentClass, *reply, failures));
    EXPECT_EQ(lines(), "ShareWithUser[1].SharingID users[1].identifier it is missing\n"
                       "ShareWithUser[1].Name users[1].name it is missing\n"
                       "ShareWithUser[2] users[2] takes an object, has null\n");
}

// Of one reply: keys of its own, of folders that fail it, and of a value that cannot be read.
TEST_F(ItemMapping, NamesAllKeysOfASharedListingAtOnce) {
    const auto folder = NS::Dictionary::dictionaryWithEntries({
        {"FolderID",    NS::str("1")         },
        {"Name",        NS::str("n")         },
        {"Encrypted",   NS::Null::null()     },
        {"DateCreated", NS::make<NS::Array>()}
    });
    reply->setObject_forKey(NS::Array::arrayWithObjects({folder}), "SharedFolders");
    reply->setObject_forKey(NS::Null::null(), "DirUpdateTime");
    EXPECT_FALSE(Inspection::mapReply(QVSharedFolderListItem::kContentClass, *reply, failures));
    EXPECT_EQ(keys(), "ResponseType DirUpdateTime SharedFolders[0].Encrypted "
                      "SharedFolders[0].DateCreated SharedFolders[0].ShareMode ");
    EXPECT_EQ(failures[2].reason, "takes a number or a text, has null");
    EXPECT_EQ(failures[4].reason, "it is missing");
}

TEST_F(ItemMapping, LeavesOutEntriesThatAreMalformed) {
    putMalformedFile();
    reply->setObject_forKey(NS::str("1"), "ResponseType");
    const auto item = Inspection::mapReply(QVTrashFolderListItem::kContentClass, *reply, failures);
    ASSERT_TRUE(item);
    EXPECT_EQ(NS::cast<NS::Array>(item->valueForKey(*NS::str("files")))->count(), 1U);
    EXPECT_TRUE(failures.empty());
}

TEST_F(ItemMapping, NamesTheKeysOfEntriesLeftOutBesideTheOnesThatFail) {
    putMalformedFile();
    EXPECT_FALSE(Inspection::mapReply(QVTrashFolderListItem::kContentClass, *reply, failures));
    EXPECT_EQ(keys(), "ResponseType Files[1].Size ");
    EXPECT_EQ(failures[1].property, "files[1].size");
    EXPECT_EQ(failures[1].reason, "takes a number or a text, has null; the entry is left out");
}

TEST_F(ItemMapping, SaysSoWhereNoElementIsTheReason) {
    reply->setObject_forKey(NS::Null::null(), "ShareWithUser");
    EXPECT_FALSE(Inspection::mapReply(QVSharingUsersItem::kContentClass, *reply, failures));
    ASSERT_EQ(failures.size(), 1U);
    EXPECT_EQ(failures[0].reply, "ShareWithUser");
}

TEST_F(ItemMapping, IsShownAsItsArchiveIsInFront) {
    for (const QVContentClass* const each : qvContentClasses()) {
        const auto full = Tests::sampleReply(Tests::expectedClass(each->objectClass.name));
        const auto item = Inspection::mapReply(*each, *full, failures);
        ASSERT_TRUE(item);
        std::string front = shownArchiveOf(NS::Ref<QVContentItem>(*item));
        front.resize(front.size() - std::string_view("\n}\n").size());
        EXPECT_TRUE(shown(NS::Ref<QVContentItem>(*item)).starts_with(front)) << front;
    }
}

TEST_F(ItemMapping, IsShownWithNilForWhatIsAbsentAndArchived) {
    reply->setObject_forKey(NS::str("Basic"), "UserPlan");
    const NS::Ref<QVContentItem> item(*map());
    EXPECT_EQ(shown(item), shownArchiveOf(item));
    EXPECT_NE(shown(item).find("\"trashCount\": {\"$nil\": true}"), std::string::npos);
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
