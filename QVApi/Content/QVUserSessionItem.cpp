#include "QVApi/Content/QVUserSessionItem.h"

#include "Platform/Foundation/Format.h"
#include "QVApi/Content/QVConversions.h"

namespace {

constexpr QVMapping kMapping[] = {
    {"sessionId",        "SessionID"       },
    {"username",         "UserName"        },
    {"accountType",      "AccType"         },
    {"driveName",        "DriveName"       },
    {"firstName",        "UserFirstName"   },
    {"lastName",         "UserLastName"    },
    {"userId",           "UserID"          },
    {"uploadSpeedLimit", "UploadSpeedLimit"},
    {"active2FA",        "Active2FA"       },
    {"isAccountUser",    "IsAccountUser"   },
};

constexpr QVConversion kConversions[] = {
    {"isAccountUser", &qvBoolean},
};

constexpr std::string_view kArchived[] = {
    "identifier", "sessionId",     "isAccountUser",    "userIdentifier", "accountType",
    "username",   "firstName",     "lastName",         "driveName",      "userLevel",
    "userId",     "encryptionKey", "uploadSpeedLimit", "active2FA"};

} // namespace

QV_DEFINE_CONTENT_ITEM(QVUserSessionItem, .mapping = kMapping, .conversions = kConversions,
                       .archiveList = QVArchiveList::kOwn, .archived = kArchived)

NS::Ref<NS::String> QVUserSessionItem::description() const {
    return NS::stringWithFormat("%@ (username=%@, sessionId=%@, ...)", QVContentItem::description(),
                                username(), sessionId());
}
