#include "FileManagers/Shared/NotDone.h"

#include <gtest/gtest.h>

namespace {

using Shell::Outcome;

std::string why(Outcome outcome, const std::string& drive = "Cloud",
                const std::string& error = "") {
    return FileManagers::notDone("Share", outcome, drive, error).why;
}

TEST(NotDone, NamesWhatWasPicked) {
    EXPECT_EQ(FileManagers::notDone("Share", Outcome::kAbsent, "Cloud", "").what,
              "“Share” could not be carried out");
}

TEST(NotDone, PromisesThatNothingFollowsATimeout) {
    EXPECT_EQ(why(Outcome::kTimedOut),
              "Cloud does not answer. Nothing was done, and nothing will be done later.");
}

TEST(NotDone, PromisesNothingOfAnExtensionThatWent) {
    EXPECT_EQ(why(Outcome::kAbsent), "Cloud is not running.");
    EXPECT_EQ(why(Outcome::kAbsent, ""), "The drive is not running.");
}

TEST(NotDone, TellsWhatIsWrongWithTheSelection) {
    EXPECT_EQ(why(Outcome::kNotInMenu), "This is no longer possible here. Nothing was done.");
    EXPECT_EQ(why(Outcome::kNotOffered), why(Outcome::kNotInMenu));
    EXPECT_EQ(why(Outcome::kTooLarge),
              "Too many items are selected to handle them at once. Nothing was done.");
}

TEST(NotDone, PassesAnErrorOn) {
    EXPECT_EQ(why(Outcome::kFailed, "Cloud", "no: reason"), "Cloud reports an error: no: reason");
    EXPECT_EQ(why(Outcome::kFailed), "Cloud reports an error.");
}

} // namespace
