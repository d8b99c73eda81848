#include "Platform/Foundation/Error.h"

#include "Platform/Foundation/Number.h"

#include <gtest/gtest.h>

namespace {

using NS::Dictionary;
using NS::Error;
using NS::str;

class ErrorTest : public testing::Test {
  protected:
    static NS::Ref<Dictionary> facts() {
        return Dictionary::dictionaryWithEntries({
            {"NSLocalizedDescription", str("No such file")},
            {"NSFilePath",             str("/x")          }
        });
    }

    const NS::Ref<NS::String> domain = str("NSPOSIXErrorDomain");
};

TEST_F(ErrorTest, TellsItsDomainCodeAndFacts) {
    const auto error = NS::make<Error>(domain, 2, facts());
    EXPECT_EQ(error->domain()->utf8(), "NSPOSIXErrorDomain");
    EXPECT_EQ(error->code(), 2);
    EXPECT_TRUE(error->userInfo()->isEqual(facts().get()));
    EXPECT_EQ(error->localizedDescription()->description()->utf8(), "No such file");
}

TEST_F(ErrorTest, HasEmptyFactsWhereNoneAreGiven) {
    const auto error = NS::make<Error>(domain, 2);
    EXPECT_EQ(error->userInfo()->count(), 0U);
    EXPECT_EQ(error->localizedDescription(), nullptr);
}

TEST_F(ErrorTest, DoesNotChangeWithWhatItWasMadeFrom) {
    const auto changing = facts()->mutableCopy();
    const auto changingDomain = NS::make<NS::MutableString>(*domain);
    const auto error = NS::make<Error>(changingDomain, 2, changing);
    changing->removeAllObjects();
    changingDomain->setString(*str("other"));
    EXPECT_EQ(error->userInfo()->count(), 2U);
    EXPECT_EQ(error->domain()->utf8(), "NSPOSIXErrorDomain");
}

TEST_F(ErrorTest, EqualsAnErrorOfTheSameDomainCodeAndFacts) {
    const auto error = NS::make<Error>(domain, 2, facts());
    const auto same = NS::make<Error>(str("NSPOSIXErrorDomain"), 2, facts());
    EXPECT_TRUE(error->isEqual(same.get()));
    EXPECT_EQ(error->hash(), same->hash());
    EXPECT_FALSE(error->isEqual(NS::make<Error>(domain, 3, facts()).get()));
    EXPECT_FALSE(error->isEqual(NS::make<Error>(str("Other"), 2, facts()).get()));
    EXPECT_FALSE(error->isEqual(NS::make<Error>(domain, 2).get()));
    EXPECT_FALSE(error->isEqual(domain.get()));
    EXPECT_FALSE(error->isEqual(nullptr));
}

TEST_F(ErrorTest, DescribesItselfOnOneLine) {
    EXPECT_EQ(NS::make<Error>(domain, 2, facts())->description()->utf8(),
              "Error Domain=NSPOSIXErrorDomain Code=2 \"No such file\" "
              "UserInfo={NSLocalizedDescription=No such file, NSFilePath=/x}");
}

TEST_F(ErrorTest, DescribesItselfWithoutFacts) {
    EXPECT_EQ(NS::make<Error>(domain, -9223372036854775807)->description()->utf8(),
              "Error Domain=NSPOSIXErrorDomain Code=-9223372036854775807 \"(null)\"");
}

TEST_F(ErrorTest, DescribesAnErrorWithinItsFacts) {
    const auto inner = NS::make<Error>(str("Inner"), 1);
    const auto outer = NS::make<Error>(str("Outer"), 2,
                                       Dictionary::dictionaryWithEntries({
                                           {"NSUnderlyingError", inner}
    }));
    EXPECT_EQ(outer->description()->utf8(),
              "Error Domain=Outer Code=2 \"(null)\" "
              "UserInfo={NSUnderlyingError=Error Domain=Inner Code=1 \"(null)\"}");
}

} // namespace
