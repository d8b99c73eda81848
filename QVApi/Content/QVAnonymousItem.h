#pragma once

#include "QVApi/Content/QVContentItem.h"

#include <functional>

// A reply that no class describes, kept key for key. Key-value access goes to the reply; the item's
// own properties are reached by their accessors only.
class QVAnonymousItem final : public QVContentItem {
    QV_CONTENT_ITEM(QVAnonymousItem, QVContentItem)
  public:
    // Called for an entry of the reply with an error location that holds nil; gives the value to
    // keep, or nil to leave the key out. An error it sets ends the building.
    using ParseBlock = std::function<NS::RefPtr<NS::Object>(const NS::Ref<NS::Object>& key,
                                                            const NS::Ref<NS::Object>& value,
                                                            NS::RefPtr<NS::Error>& error)>;

    // An item of the reply as the block turns it, or nil with the block's first error. The error
    // location is written without a test and must be given.
    static NS::RefPtr<QVAnonymousItem> itemWithDict_parseBlock_error(const NS::Dictionary& reply,
                                                                     const ParseBlock& parse,
                                                                     NS::RefPtr<NS::Error>* error);

    // The reply; itemWithDict_error() puts a copy of the whole one here and never fails. Not
    // archived.
    NS_RECORD_PROPERTY(NS::MutableDictionary, response, setResponse)

    NS::RefPtr<NS::Object> valueForKey(const NS::String& key) const override;
    NS::RefPtr<NS::Object> valueForKeyPath(const NS::String& path) const override;
    void setValue_forKey(NS::RefPtr<NS::Object> value, const NS::String& key) override;
    void setValue_forKeyPath(NS::RefPtr<NS::Object> value, const NS::String& path) override;
};
