#pragma once

#include "QVApi/Content/QVContentItem.h"

// The account's pages on the service's web site.
class QVUserLinksItem final : public QVContentItem {
    QV_CONTENT_ITEM(QVUserLinksItem, QVContentItem)
  public:
    QVUserLinksItem() { setIdentifier(qvDefaultIdentifier()); }

    NS_RECORD_PROPERTY(NS::String, accountLink, setAccountLink)
    NS_RECORD_PROPERTY(NS::String, billingLink, setBillingLink)
};
