#include "Utilities/QVUIUtilities.h"

#include "Platform/Foundation/Description.h"
#include "Platform/Foundation/Testing/RaisedException.h"

#include <gtest/gtest.h>

#include <clocale>
#include <limits>
#include <string>

namespace {

std::string size(std::int64_t bytes) {
    return NS::descriptionOf(QVUIUtilities::getSizeFormattedStr(bytes).get())->utf8();
}

struct SizeText {
    std::int64_t bytes;
    const char* text;
};

class SizeFormat : public testing::TestWithParam<SizeText> {};

TEST_P(SizeFormat, ShowsDecimalUnits) {
    EXPECT_EQ(size(GetParam().bytes), GetParam().text);
}

INSTANTIATE_TEST_SUITE_P(Bytes, SizeFormat,
                         testing::Values(SizeText{0, "0 bytes"}, SizeText{1, "1 bytes"},
                                         SizeText{999, "999 bytes"}));
INSTANTIATE_TEST_SUITE_P(KilobytesInSinglePrecision, SizeFormat,
                         testing::Values(SizeText{1'000, "1.0 KB"}, SizeText{1'049, "1.0 KB"},
                                         SizeText{1'050, "1.0 KB"}, SizeText{1'051, "1.1 KB"},
                                         SizeText{1'350, "1.4 KB"}, SizeText{1'450, "1.5 KB"},
                                         SizeText{999'949, "999.9 KB"},
                                         SizeText{999'950, "1000.0 KB"},
                                         SizeText{999'999, "1000.0 KB"}));
INSTANTIATE_TEST_SUITE_P(Megabytes, SizeFormat,
                         testing::Values(SizeText{1'000'000, "1.00 MB"},
                                         SizeText{1'234'567, "1.23 MB"},
                                         SizeText{999'994'999, "999.99 MB"},
                                         SizeText{999'995'000, "1000.00 MB"},
                                         SizeText{999'999'999, "1000.00 MB"}));
INSTANTIATE_TEST_SUITE_P(
    Gigabytes, SizeFormat,
    testing::Values(SizeText{1'000'000'000, "1.00 GB"}, SizeText{123'456'789'012, "123.46 GB"},
                    SizeText{std::numeric_limits<std::int64_t>::max(), "9223372036.85 GB"}));

TEST(SizeFormat, IsNilForANegativeCount) {
    EXPECT_FALSE(QVUIUtilities::getSizeFormattedStr(-1));
    EXPECT_FALSE(QVUIUtilities::getSizeFormattedStr(std::numeric_limits<std::int64_t>::min()));
}

TEST(SizeFormat, RoundsHalvesAsSinglePrecisionDoesAllOver) {
    for (std::int64_t bytes = 1'050; bytes < 1'000'000; bytes += 100) {
        std::string text(32, '\0');
        const float kilobytes = static_cast<float>(bytes) / 1000.0F;
        text.resize(static_cast<std::size_t>(
            std::snprintf(text.data(), text.size(), "%.1f KB", static_cast<double>(kilobytes))));
        ASSERT_EQ(size(bytes), text);
    }
}

class StorageInfo : public testing::Test {
  protected:
    std::string text() const { return QVUIUtilities::formatStorageInfo(*info)->utf8(); }
    void setLimit(std::int64_t mebibytes) {
        info->setStorageMax(NS::Number::numberWithLongLong(mebibytes));
    }
    void setUsed(std::int64_t bytes) {
        info->setStorageUsed(NS::Number::numberWithLongLong(bytes));
    }

    NS::Ref<QVUserInfoItem> info = [] {
        auto made = NS::make<QVUserInfoItem>();
        made->setPlan(NS::str("Personal"));
        return made;
    }();
};

TEST_F(StorageInfo, ShowsBytesUsedOfALimitInMebibytes) {
    setUsed(1'234'567);
    setLimit(5'120);
    EXPECT_EQ(text(), "1.23 MB of 5.37 GB used");
}

TEST_F(StorageInfo, ShowsTheLimitInDecimalUnits) {
    for (const auto& [mebibytes, shown] : {
             std::pair{500,   "524.29 MB"},
             {1'024, "1.07 GB"  },
             {2'048, "2.15 GB"  }
    }) {
        setLimit(mebibytes);
        EXPECT_EQ(text(), "0 bytes of " + std::string(shown) + " used");
    }
}

TEST_F(StorageInfo, LeavesOutTheLimitOfAnUnlimitedAccount) {
    setUsed(2'147'483'648);
    info->setStorageMax(nullptr);
    info->setPlan(NS::str("Unlimited Plus"));
    EXPECT_EQ(text(), "2.15 GB used | Unlimited");
}

TEST_F(StorageInfo, DoesNotReadTheLimitOfAnUnlimitedAccount) {
    info->setPlan(NS::str("Unlimited"));
    info->setValue_forKey(NS::str("no number"), *NS::str("storageMax"));
    EXPECT_EQ(text(), "0 bytes used | Unlimited");
}

TEST_F(StorageInfo, ReadsFiguresThatAreMissingAs0) {
    EXPECT_EQ(text(), "0 bytes of 0 bytes used");
}

TEST_F(StorageInfo, ShowsThePlaceholderOfNilForANegativeFigure) {
    setUsed(-1);
    setLimit(1'024);
    EXPECT_EQ(text(), "(null) of 1.07 GB used");
}

TEST_F(StorageInfo, ShiftsTheLimitAsAnUnsignedCount) {
    info->setStorageMax(NS::Number::numberWithUnsignedLongLong(std::uint64_t{1} << 43U));
    EXPECT_EQ(text(), "0 bytes of (null) used");
    info->setStorageMax(NS::Number::numberWithUnsignedLongLong(std::uint64_t{1} << 44U));
    EXPECT_EQ(text(), "0 bytes of 0 bytes used");
}

TEST_F(StorageInfo, RaisesForALimitThatIsNoNumber) {
    info->setValue_forKey(NS::str("5120"), *NS::str("storageMax"));
    EXPECT_EQ(Tests::nameOfException([&] { (void)text(); }), NS::kInvalidArgumentException);
}

} // namespace
