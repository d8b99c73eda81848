#include "QVApi/Content/QVContentClasses.h"

#include "QVApi/Content/QVAnonymousItem.h"
#include "QVApi/Content/QVUserInfoItem.h"

namespace {

constexpr const QVContentClass* kClasses[] = {
    &QVContentItem::kContentClass,
    &QVSynchedItem::kContentClass,
    &QVAnonymousItem::kContentClass,
    &QVUserInfoItem::kContentClass,
};

} // namespace

std::span<const QVContentClass* const> qvContentClasses() {
    return kClasses;
}
