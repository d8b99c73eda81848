#include "QVApi/Content/Testing/ContentTables.h"

#include "Platform/Foundation/Array.h"
#include "Platform/Foundation/Exception.h"
#include "Platform/Foundation/Number.h"

#include <algorithm>
#include <sstream>
#include <utility>

namespace Tests {

namespace {

using enum Conversion;

// A class a paragraph: its name and superclass; its own properties in their order; its table as
// property=key, with the conversion behind a colon where it is not pass-through, and the class of
// a list's items; its archive list; what its initialiser sets.
constexpr const char* kClasses = R"(
QVContentItem NSObject
    properties timeReceived identifier parsingFrom
QVSynchedItem QVContentItem
    properties dateModified
    archives   dateModified
QVAnonymousItem QVContentItem
    properties response

QVUserSessionItem QVContentItem
    properties sessionId encryptionKey userIdentifier accountType userId username firstName
               lastName driveName userLevel isAccountUser uploadSpeedLimit active2FA
    maps       sessionId=SessionID username=UserName accountType=AccType driveName=DriveName
               firstName=UserFirstName lastName=UserLastName userId=UserID
               uploadSpeedLimit=UploadSpeedLimit active2FA=Active2FA
               isAccountUser=IsAccountUser:boolean
    archives   identifier sessionId isAccountUser userIdentifier accountType username firstName
               lastName driveName userLevel userId encryptionKey uploadSpeedLimit active2FA
    starts     identifier=default
QVUserInfoItem QVContentItem
    properties storageUsed storageMax bandwidthUsed bandwidthMax plan trashCount
    maps       storageMax=MaxStorage:long storageUsed=StorageUsed:long bandwidthUsed=BwUsed:long
               bandwidthMax=BwMax:long plan=UserPlan
    archives   identifier storageMax storageUsed bandwidthUsed bandwidthMax plan trashCount
    starts     identifier=default
QVUserLinksItem QVContentItem
    properties accountLink billingLink
    maps       accountLink=account billingLink=billing
    archives   accountLink billingLink
    starts     identifier=default
QVNotificationsItem QVContentItem
    properties list
    maps       list=Notification

QVSharingUserItem QVContentItem
    properties name mode
    maps       identifier=SharingID name=Name mode=ShareMode
    archives   identifier name mode
QVSharingUsersItem QVContentItem
    properties users
    maps       users=ShareWithUser:failing:QVSharingUserItem
    archives   identifier users

QVFileItem QVContentItem
    properties name size dateModified requireCompression
    maps       identifier=FileId name=Name:name size=Size:long
               requireCompression=RequireCompression:long dateModified=DateModified:date
    archives   identifier name size requireCompression dateModified
QVSharedFileItem QVFileItem
    properties shareMode
    maps       identifier=FileId name=Name:name size=Size:long dateModified=DateModified:date
               shareMode=ShareMode
    archives   identifier name size requireCompression dateModified shareMode
QVFileInfoItem QVFileItem
    properties path link streamingLink downloadLink fileDescription price access
    maps       identifier=FileId name=Name:name size=Size:long dateModified=DateModified:date
               link=Link downloadLink=DownloadLink streamingLink=StreamingLink access=Access
               fileDescription=Description
    archives   identifier name size requireCompression dateModified path link downloadLink
               streamingLink fileDescription price access
QVFileThumbnailItem QVContentItem
    properties data
    archives   identifier data

QVFolderItem QVContentItem
    properties name dateCreated dateModified encrypted
    maps       identifier=FolderID name=Name:name encrypted=Encrypted:int
               dateCreated=DateCreated:date dateModified=DateModified:date
    archives   identifier name dateCreated dateModified encrypted
    starts     encrypted=0
QVSharedFolderItem QVFolderItem
    properties shareMode
    maps       identifier=FolderID name=Name:name encrypted=Encrypted:int
               dateCreated=DateCreated:date dateModified=DateModified:date shareMode=ShareMode
    archives   identifier name dateCreated dateModified encrypted shareMode
    starts     encrypted=0
QVFolderInfoItem QVFolderItem
    properties path link folderDescription access
    maps       identifier=FolderID name=Name:name encrypted=Encrypted:int
               dateCreated=DateCreated:date dateModified=DateModified:date link=Link
               folderDescription=Description access=Access
    archives   identifier name dateCreated dateModified encrypted path link folderDescription access
    starts     encrypted=0
QVFSIdItem QVContentItem
    properties path
    maps       identifier=FileId
    archives   identifier path
QVFolderFSIdItem QVFSIdItem
    maps       identifier=FolderId
    archives   identifier path

QVFolderListItem QVContentItem
    properties path updateTime name parentFolderId directFolderLink responseType encrypted files
               folders
    maps       updateTime=DirUpdateTime:long name=Name parentFolderId=ParentFolderID
               responseType=ResponseType folders=Folders:skipping:QVFolderItem
               files=Files:skipping:QVFileItem
    archives   identifier updateTime name path parentFolderId directFolderLink responseType files
               folders encrypted
    starts     files=() folders=() encrypted=0
QVSharedFolderListItem QVFolderListItem
    maps       responseType=ResponseType updateTime=DirUpdateTime:long
               folders=SharedFolders:failing:QVSharedFolderItem
    archives   identifier updateTime name path parentFolderId directFolderLink responseType files
               folders encrypted
    starts     files=() folders=() encrypted=0
QVTrashFolderListItem QVFolderListItem
    maps       responseType=ResponseType updateTime=DirUpdateTime:long
               folders=Folders:skipping:QVFolderItem files=Files:skipping:QVFileItem
    archives   identifier updateTime name path parentFolderId directFolderLink responseType files
               folders encrypted
    starts     files=() folders=() encrypted=0
QVSharedUsersFolderListItem QVFolderListItem
    maps       responseType=ResponseType updateTime=DirUpdateTime:long
               folders=SharedUsers:users:QVSharingUserItem
    archives   identifier updateTime name path parentFolderId directFolderLink responseType files
               folders encrypted
    starts     files=() folders=() encrypted=0
QVStubFolderListItem QVFolderListItem
    maps       updateTime=DirUpdateTime:long name=Name parentFolderId=ParentFolderID
               responseType=ResponseType folders=Folders:skipping:QVFolderItem
               files=Files:skipping:QVFileItem
    archives   identifier updateTime name path parentFolderId directFolderLink responseType files
               folders encrypted
    starts     files=() folders=() encrypted=0

QVBinaryDataDescriptorItem QVContentItem
    properties completedBytes totalBytes path encrypted error
    archives   identifier completedBytes totalBytes path encrypted
    starts     encrypted=0
QVUploadFileHandle QVContentItem
    properties path tempLocation isUploading requireHash requireHashOnly size
    maps       tempLocation=TempLocation requireHash=RequireHash requireHashOnly=RequireHashOnly
    archives   identifier isUploading path tempLocation requireHash requireHashOnly
QVChunkUploadResult QVContentItem
    properties bytesWritten
    maps       bytesWritten=TotalWritten
QVSharedXAttrs QVSynchedItem
    properties xattrsByPath
    archives   dateModified identifier xattrsByPath
    starts     identifier=default xattrsByPath={}
)";

constexpr std::pair<std::string_view, Conversion> kConversionNames[] = {
    {"",         kPassThrough  },
    {"long",     kLongInteger  },
    {"int",      kInt          },
    {"boolean",  kBoolean      },
    {"date",     kSecondsToDate},
    {"name",     kCanonicalName},
    {"skipping", kListThatSkips},
    {"failing",  kListThatFails},
    {"users",    kSharingUsers },
};

// Cuts a text at a mark; the second part is empty where there is none.
std::pair<std::string, std::string> cut(const std::string& text, char mark) {
    const std::size_t at = text.find(mark);
    return at == std::string::npos ? std::pair(text, std::string())
                                   : std::pair(text.substr(0, at), text.substr(at + 1));
}

ExpectedRow rowFrom(const std::string& word) {
    const auto [property, source] = cut(word, '=');
    const auto [reply, kind] = cut(source, ':');
    const auto [conversion, elementClass] = cut(kind, ':');
    const auto* const known = std::ranges::find(kConversionNames, conversion,
                                                &std::pair<std::string_view, Conversion>::first);
    return {property, reply, known->second, elementClass};
}

ExpectedValue valueFrom(const std::string& word) {
    const auto [property, description] = cut(word, '=');
    const bool isEmptyCollection = description == "()" || description == "{}";
    return {property, isEmptyCollection ? description.substr(0, 1) + '\n' + description.substr(1)
                                        : description};
}

std::vector<ExpectedClass> readClasses() {
    std::vector<ExpectedClass> classes;
    std::string part;
    std::istringstream words(kClasses);
    for (std::string word; words >> word;) {
        if (word.starts_with("QV")) {
            classes.push_back({word});
            words >> classes.back().superclass;
        } else if (word == "properties" || word == "maps" || word == "archives" ||
                   word == "starts") {
            part = word;
        } else if (part == "properties") {
            classes.back().properties.push_back(word);
        } else if (part == "maps") {
            classes.back().mapping.push_back(rowFrom(word));
        } else if (part == "archives") {
            classes.back().archived.push_back(word);
        } else {
            classes.back().initialValues.push_back(valueFrom(word));
        }
    }
    return classes;
}

} // namespace

const std::vector<ExpectedClass>& expectedClasses() {
    static const std::vector<ExpectedClass> classes = readClasses();
    return classes;
}

const ExpectedClass& expectedClass(std::string_view name) {
    const auto found = std::ranges::find(expectedClasses(), name, &ExpectedClass::name);
    if (found == expectedClasses().end()) {
        NS::Exception::raise(NS::kGenericException, "nothing is expected of " + std::string(name));
    }
    return *found;
}

std::vector<const NS::Property*> allPropertiesOf(const QVContentClass& itemClass) {
    std::vector<const NS::Property*> properties;
    if (itemClass.superclass != nullptr) {
        properties = allPropertiesOf(*itemClass.superclass);
    }
    for (const NS::Property& each : itemClass.objectClass.properties) {
        properties.push_back(&each);
    }
    return properties;
}

NS::Ref<NS::Object> sampleValue(const ExpectedRow& row) {
    switch (row.conversion) {
    case kPassThrough:
    case kCanonicalName:
        return NS::str("the " + row.property);
    case kListThatSkips:
    case kListThatFails:
    case kSharingUsers:
        return NS::Array::arrayWithObjects({sampleReply(expectedClass(row.elementClass))});
    default:
        return NS::Number::numberWithInt(1);
    }
}

NS::Ref<NS::MutableDictionary> sampleReply(const ExpectedClass& itemClass) {
    auto reply = NS::make<NS::MutableDictionary>();
    for (const ExpectedRow& row : itemClass.mapping) {
        reply->setObject_forKey(sampleValue(row), row.reply);
    }
    return reply;
}

} // namespace Tests
