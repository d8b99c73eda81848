#pragma once

#include "Platform/Foundation/Number.h"
#include "QVApi/Content/QVContentItem.h"

// The account's storage and bandwidth figures and its plan: the record that the host sends to the
// extension.
class QVUserInfoItem final : public QVContentItem {
    QV_CONTENT_ITEM(QVUserInfoItem, QVContentItem)
  public:
    QVUserInfoItem() { setIdentifier(qvDefaultIdentifier()); }

    // Bytes.
    NS_RECORD_PROPERTY(NS::Number, storageUsed, setStorageUsed)
    // Mebibytes, unlike storageUsed.
    NS_RECORD_PROPERTY(NS::Number, storageMax, setStorageMax)
    NS_RECORD_PROPERTY(NS::Number, bandwidthUsed, setBandwidthUsed)
    NS_RECORD_PROPERTY(NS::Number, bandwidthMax, setBandwidthMax)
    NS_RECORD_PROPERTY(NS::String, plan, setPlan)
    // How many items are in the drive's trash; set by the record's owner.
    NS_RECORD_PROPERTY(NS::Number, trashCount, setTrashCount)

    // True when the plan's name has "Unlimited" in it, and also without a plan, as looking for a
    // text in nothing has always found it at the beginning. Raises for a plan that is no text.
    bool isUnlimited() const;
};
