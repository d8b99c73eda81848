#pragma once

#include "Platform/Foundation/Object.h"
#include "Platform/Foundation/String.h"
#include "QVApi/Content/QVUserInfoItem.h"

#include <cstdint>

// The account's storage figures as text. No state; any thread.
class QVUIUtilities final : public NS::Object {
    NS_OBJECT(QVUIUtilities)
  public:
    // "1.23 MB of 5.37 GB used", or "1.23 MB used | Unlimited". The used figure counts bytes and
    // the limit mebibytes, and both are shown in decimal units. A figure that is missing reads as
    // 0; one that is negative shows as "(null)". Raises NSInvalidArgumentException for figures that
    // are no numbers.
    static NS::Ref<NS::String> formatStorageInfo(const QVUserInfoItem& info);

    // A count of bytes in decimal units, rounded, with a point whatever the locale; nil when it is
    // negative. Rounding does not carry into the next unit: 999,999 is "1000.0 KB".
    static NS::RefPtr<NS::String> getSizeFormattedStr(std::int64_t bytes);
};
