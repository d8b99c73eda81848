#include "Programs/FinderExtension/MenuState.h"

#include "Platform/Foundation/Exception.h"
#include "Platform/Foundation/Format.h"
#include "QVApi/Content/QVUserInfoItem.h"

namespace {

// A record can hold anything, and what a menu raises for it is its own matter.
std::optional<std::string> textsOf(const FinderSync& extension) {
    try {
        const auto info = NS::cast<QVUserInfoItem>(extension.storageInfo());
        return info ? NS::stringWithFormat("%@ %@", info->trashCount(),
                                           extension.storageMenuItem()->title())
                          ->utf8()
                    : "";
    } catch (const NS::Exception&) {
        return std::nullopt;
    }
}

} // namespace

std::vector<NS::RefPtr<NS::Object>> MenuState::operator()() {
    return {extension_->drivePath(), shownRecord()};
}

const NS::RefPtr<NS::Object>& MenuState::shownRecord() {
    auto record = extension_->storageInfo();
    if (record != latest_) {
        latest_ = std::move(record);
        auto texts = textsOf(*extension_);
        if (!texts || texts != texts_) {
            shown_ = latest_;
        }
        texts_ = std::move(texts);
    }
    return shown_;
}
