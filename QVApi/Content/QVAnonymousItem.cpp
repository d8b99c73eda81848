#include "QVApi/Content/QVAnonymousItem.h"

namespace {

NS::RefPtr<QVContentItem> itemWithWholeReply(const NS::Dictionary& reply, NS::RefPtr<NS::Error>*) {
    const auto item = NS::make<QVAnonymousItem>();
    item->setResponse(reply.mutableCopy());
    return item;
}

} // namespace

QV_DEFINE_CONTENT_ITEM(QVAnonymousItem, .itemWithDict = &itemWithWholeReply)

NS::RefPtr<QVAnonymousItem>
QVAnonymousItem::itemWithDict_parseBlock_error(const NS::Dictionary& reply, const ParseBlock& parse,
                                               NS::RefPtr<NS::Error>* error) {
    const auto item = NS::make<QVAnonymousItem>();
    const auto response = NS::make<NS::MutableDictionary>();
    item->setResponse(response);
    for (const auto& [key, value] : reply) {
        NS::RefPtr<NS::Error> failure;
        const auto parsed = parse(key, value, failure);
        if (failure) {
            *error = failure;
            return nullptr;
        }
        if (parsed) {
            response->setObject_forKey(parsed, key);
        }
    }
    return item;
}

// A message to a reply that is not there is nothing.
NS::RefPtr<NS::Object> QVAnonymousItem::valueForKey(const NS::String& key) const {
    const auto reply = response();
    return reply ? reply->valueForKey(key) : nullptr;
}

NS::RefPtr<NS::Object> QVAnonymousItem::valueForKeyPath(const NS::String& path) const {
    const auto reply = response();
    return reply ? reply->valueForKeyPath(path) : nullptr;
}

void QVAnonymousItem::setValue_forKey(NS::RefPtr<NS::Object> value, const NS::String& key) {
    if (const auto reply = response()) {
        reply->setValue_forKey(std::move(value), key);
    }
}

void QVAnonymousItem::setValue_forKeyPath(NS::RefPtr<NS::Object> value, const NS::String& path) {
    if (const auto reply = response()) {
        reply->setValue_forKeyPath(std::move(value), path);
    }
}
