#pragma once

#include "Platform/Foundation/Data.h"
#include "Platform/Foundation/Number.h"
#include "QVApi/Content/QVContentItem.h"

// A login to the service.
class QVUserSessionItem final : public QVContentItem {
    QV_CONTENT_ITEM(QVUserSessionItem, QVContentItem)
  public:
    QVUserSessionItem() { setIdentifier(qvDefaultIdentifier()); }

    NS_RECORD_PROPERTY(NS::String, sessionId, setSessionId)
    // Set by the item's owner, as are userIdentifier and userLevel.
    NS_RECORD_PROPERTY(NS::Data, encryptionKey, setEncryptionKey)
    NS_RECORD_PROPERTY(NS::Number, userIdentifier, setUserIdentifier)
    NS_RECORD_PROPERTY(NS::Number, accountType, setAccountType)
    NS_RECORD_PROPERTY(NS::String, userId, setUserId)
    NS_RECORD_PROPERTY(NS::String, username, setUsername)
    NS_RECORD_PROPERTY(NS::String, firstName, setFirstName)
    NS_RECORD_PROPERTY(NS::String, lastName, setLastName)
    NS_RECORD_PROPERTY(NS::String, driveName, setDriveName)
    NS_RECORD_PROPERTY(NS::Number, userLevel, setUserLevel)
    NS_RECORD_PROPERTY(NS::Number, isAccountUser, setIsAccountUser)
    NS_RECORD_PROPERTY(NS::Number, uploadSpeedLimit, setUploadSpeedLimit)
    NS_RECORD_PROPERTY(NS::Number, active2FA, setActive2FA)

    NS::Ref<NS::String> description() const override;
};
