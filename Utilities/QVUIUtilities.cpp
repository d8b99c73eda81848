#include "Utilities/QVUIUtilities.h"

#include "Platform/Foundation/Format.h"

constinit const NS::Class QVUIUtilities::kClass{.name = "QVUIUtilities",
                                                .superclass = &NS::Object::kClass};

namespace {

constexpr std::int64_t kKilobyte = 1'000;
constexpr std::int64_t kMegabyte = 1'000'000;
constexpr std::int64_t kGigabyte = 1'000'000'000;
constexpr unsigned kMebibyteShift = 20;

std::int64_t bytesOfLimit(const QVUserInfoItem& info) {
    const auto mebibytes = NS::cast<NS::Number>(info.storageMax());
    return static_cast<std::int64_t>((mebibytes ? mebibytes->unsignedLongLongValue() : 0)
                                     << kMebibyteShift);
}

} // namespace

NS::Ref<NS::String> QVUIUtilities::formatStorageInfo(const QVUserInfoItem& info) {
    const auto used = [&] {
        return getSizeFormattedStr(NS::longLongValue(info.storageUsed()));
    };
    if (info.isUnlimited()) {
        return NS::stringWithFormat("%@ used | Unlimited", used());
    }
    return NS::stringWithFormat("%@ of %@ used", used(), getSizeFormattedStr(bytesOfLimit(info)));
}

NS::RefPtr<NS::String> QVUIUtilities::getSizeFormattedStr(std::int64_t bytes) {
    if (bytes < 0) {
        return nullptr;
    }
    if (bytes == 0) {
        return NS::str("0 bytes");
    }
    if (bytes < kKilobyte) {
        return NS::stringWithFormat("%qi bytes", bytes);
    }
    if (bytes < kMegabyte) {
        // Single precision, as it has always been: it decides how halves round.
        return NS::stringWithFormat("%.1f KB", static_cast<float>(bytes) / 1000.0F);
    }
    if (bytes < kGigabyte) {
        return NS::stringWithFormat("%.2f MB", static_cast<double>(bytes) / kMegabyte);
    }
    return NS::stringWithFormat("%.2f GB", static_cast<double>(bytes) / kGigabyte);
}
