#include "Platform/CrashReporter/linux/ReportText.h"

#include "Tests/Support/PrivateFolders.h"
#include "Tests/Support/Process.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <limits>
#include <string>
#include <unistd.h>

namespace {

class ReportText : public Tests::FolderTest {
  protected:
    ReportText() { text.begin(file_); }
    ~ReportText() override { ::close(file_); }

    std::string written() {
        text.flush();
        return Tests::contentsOf(path_);
    }

    NS::ReportText text;

  private:
    std::filesystem::path path_ = folders.root() / "report";
    int file_ = ::open(path_.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600);
};

TEST_F(ReportText, WritesDecimalNumbers) {
    text.decimal(0) << " ";
    text.decimal(-12) << " ";
    text.decimal(7, 3) << " ";
    text.decimal(12345, 3) << " ";
    text.decimal(std::numeric_limits<std::int64_t>::min());
    EXPECT_EQ(written(), "0 -12 007 12345 -9223372036854775808");
}

TEST_F(ReportText, WritesAddresses) {
    text.address(0) << " ";
    text.address(0xFEDCBA9876543210) << " ";
    text.byte(0x0F);
    EXPECT_EQ(written(), "0x0000000000000000 0xfedcba9876543210 0f");
}

TEST_F(ReportText, KeepsWhatComesFromElsewhereInItsLine) {
    text.text("a\nb\tc\\d\x1B[0m\x7F");
    EXPECT_EQ(written(), R"(a\nb\tc\\d\x1b[0m\x7f)");
}

TEST_F(ReportText, LeavesUtf8AsItIs) {
    text.text("caf\xC3\xA9");
    EXPECT_EQ(written(), "caf\xC3\xA9");
}

TEST_F(ReportText, EndsATextAtItsZero) {
    text.text(std::string_view("ab\0cd", 5));
    EXPECT_EQ(written(), "ab");
}

TEST_F(ReportText, FillsColumns) {
    text.column("ab", 4) << "|";
    text.column("a\nb", 4) << "|";
    text.column("abcde", 4) << "|";
    EXPECT_EQ(written(), "ab  |a\\nb|abcde|");
}

TEST_F(ReportText, WritesMoreThanItHolds) {
    const std::string longText(10'000, 'x');
    text << longText;
    EXPECT_EQ(written(), longText);
    EXPECT_EQ(text.written(), longText.size());
}

TEST_F(ReportText, LosesWhatTheFileDoesNotTake) {
    const int full = ::open("/dev/full", O_WRONLY | O_CLOEXEC);
    text.begin(full);
    text << std::string(10'000, 'x');
    text.flush();
    EXPECT_EQ(text.written(), 0U);
    ::close(full);
}

} // namespace
