#include "Platform/Foundation/Error.h"

#include "Platform/Foundation/ContentHash.h"
#include "Platform/Foundation/Description.h"
#include "Platform/Foundation/Format.h"
#include "Platform/Foundation/StringBuilder.h"

namespace NS {

constinit const Class Error::kClass{.name = "NSError", .superclass = &Object::kClass};

namespace {

Ref<Dictionary> copyOf(const RefPtr<Dictionary>& dictionary) {
    return dictionary ? dictionary->copy() : make<Dictionary>();
}

} // namespace

Error::Error(const Ref<String>& domain, std::int64_t code, const RefPtr<Dictionary>& userInfo)
    : domain_(domain->copy()), code_(code), userInfo_(copyOf(userInfo)) {}

RefPtr<Object> Error::localizedDescription() const {
    return userInfo_->objectForKey("NSLocalizedDescription");
}

bool Error::isEqual(const Object* other) const {
    const auto* error = as<Error>(other);
    return error != nullptr && code_ == error->code_ && domain_->isEqual(error->domain_.get()) &&
           userInfo_->isEqual(error->userInfo_.get());
}

std::size_t Error::hash() const {
    return hashOfContents(*this);
}

Ref<String> Error::description() const {
    StringBuilder text;
    text.append(*stringWithFormat("Error Domain=%@ Code=%lld \"%@\"", domain_, code_,
                                  localizedDescription()));
    if (userInfo_->count() > 0) {
        text.append(*describeUserInfo(*userInfo_));
    }
    return text.string();
}

} // namespace NS
