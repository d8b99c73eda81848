#include "Programs/Inspect/ReportListing.h"

#include "CustomConsoleLogging/Testing/ReportsFixture.h"

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

#include <sstream>

namespace {

namespace fs = std::filesystem;

using Json = nlohmann::ordered_json;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

class ReportListing : public Tests::ReportsTest {
  protected:
    ReportListing() {
        fs::create_directories(logFolder());
        fs::create_directories(retired());
    }

    static std::vector<std::string> pathsOf(const std::vector<Inspection::ListedFile>& files) {
        std::vector<std::string> paths;
        for (const Inspection::ListedFile& file : files) {
            paths.push_back(file.path->fileSystemRepresentation());
        }
        return paths;
    }
    static std::string plain() {
        std::ostringstream text;
        Inspection::printReports(Inspection::listReports(), text);
        return text.str();
    }
    static Json json() {
        std::ostringstream text;
        Inspection::printReportsAsJson(Inspection::listReports(), text);
        return Json::parse(text.str());
    }
    std::string report(const std::string& name) const { return reports() / name; }
};

TEST_F(ReportListing, HasEachGroupWithTheLatestCreationFirst) {
    put(logFolder() / "FELog-b.txt");
    put(report("Fennmoor_b.crash"));
    put(report("Other_b.hang"));
    putAfter(report("Other_b.hang"), report("Other_a.hang"));
    putAfter(report("Fennmoor_b.crash"), report("Fennmoor_a.ips"));
    putAfter(logFolder() / "FELog-b.txt", logFolder() / "FELog-a.txt");
    modify(report("Fennmoor_b.crash"), 4102444800); // in 2100
    const Inspection::ReportListing listing = Inspection::listReports();
    EXPECT_THAT(pathsOf(listing.logs),
                ElementsAre(logFolder() / "FELog-a.txt", logFolder() / "FELog-b.txt"));
    EXPECT_THAT(pathsOf(listing.reports),
                ElementsAre(report("Fennmoor_a.ips"), report("Fennmoor_b.crash")));
    EXPECT_THAT(pathsOf(listing.otherReports),
                ElementsAre(report("Other_a.hang"), report("Other_b.hang")));
}

TEST_F(ReportListing, AnswersAsTheDiscoveryDoes) {
    put(report("Fennmoor_b.crash"));
    modify(report("Fennmoor_b.crash"), 4102444800);
    putAfter(report("Fennmoor_b.crash"), report("Fennmoor_a.ips"));
    put(retired() / "Fennmoor_c.hang");
    ASSERT_TRUE(logging().writePathOfLastProcessedCrashReport(NS::str("/processed")));
    const Inspection::ReportListing listing = Inspection::listReports();
    EXPECT_EQ(bytesOf(listing.lastCreated), report("Fennmoor_a.ips"));
    EXPECT_EQ(bytesOf(listing.lastModified), report("Fennmoor_b.crash"));
    EXPECT_EQ(bytesOf(listing.lastRetired), retired() / "Fennmoor_c.hang");
    EXPECT_EQ(bytesOf(listing.lastProcessed), "/processed");
    EXPECT_EQ(bytesOf(listing.installLog), folders.data() / "Quorvane/qvinst/install-log.txt");
    EXPECT_EQ(bytesOf(listing.renameLog), "/tmp/rn_items");
}

TEST_F(ReportListing, HasRetiredReportsWhereTheyAre) {
    put(retired() / "Fennmoor_x.crash");
    putAfter(retired() / "Fennmoor_x.crash", report("Crestwarden_x.ips"));
    EXPECT_THAT(pathsOf(Inspection::listReports().reports),
                ElementsAre(report("Crestwarden_x.ips"), retired() / "Fennmoor_x.crash"));
}

TEST_F(ReportListing, HasAReportThatIsInBothFoldersTwice) {
    put(retired() / "Fennmoor_x.crash");
    putAfter(retired() / "Fennmoor_x.crash", report("Fennmoor_x.crash"));
    EXPECT_THAT(pathsOf(Inspection::listReports().reports),
                ElementsAre(report("Fennmoor_x.crash"), retired() / "Fennmoor_x.crash"));
}

// The inspector looks at other processes' logs; one of its own would push the oldest out.
TEST_F(ReportListing, LeavesNoLogOfItsOwn) {
    put(logFolder() / "FELog-a.txt");
    const Inspection::ReportListing listing = Inspection::listReports();
    EXPECT_FALSE(listing.lastCreated);
    EXPECT_THAT(listing.reports, IsEmpty());
    EXPECT_EQ(logFiles(), std::vector<std::string>{"FELog-a.txt"});
}

TEST_F(ReportListing, MakesNoFolders) {
    fs::remove_all(folders.data() / "Quorvane");
    fs::remove_all(folders.state() / "Logs");
    EXPECT_THAT(Inspection::listReports().logs, IsEmpty());
    EXPECT_TRUE(fs::is_empty(folders.data()));
    EXPECT_TRUE(fs::is_empty(folders.state()));
}

TEST_F(ReportListing, PrunesNothing) {
    for (int i = 0; i < 30; ++i) {
        put(logFolder() / std::to_string(i));
    }
    EXPECT_EQ(Inspection::listReports().logs.size(), 30U);
    EXPECT_EQ(logFiles().size(), 30U);
}

TEST_F(ReportListing, IsPrintedWithTheNewestMarked) {
    put(report("Fennmoor_b.crash"), "12345");
    putAfter(report("Fennmoor_b.crash"), report("Fennmoor_a.ips"));
    const std::string text = plain();
    const std::size_t newest = text.find("\n* 2");
    ASSERT_NE(newest, std::string::npos) << text;
    EXPECT_EQ(text.substr(newest + 22, 13 + report("Fennmoor_a.ips").size()),
              "          0  " + report("Fennmoor_a.ips"));
    EXPECT_THAT(text, HasSubstr("          5  " + report("Fennmoor_b.crash") + "\n"));
    EXPECT_THAT(text, HasSubstr("Logs\n  none\n\nCrashes of the client\n* "));
    EXPECT_THAT(text, HasSubstr("\nCreated last      " + report("Fennmoor_a.ips") + "\n"));
    EXPECT_THAT(text, HasSubstr("\nRetired last      none\n"));
    EXPECT_THAT(text, HasSubstr("/qvinst/install-log.txt  (not there)\n"));
}

TEST_F(ReportListing, IsPrintedInLocalTime) {
    Inspection::ReportListing listing;
    const auto date = NS::make<NS::Date>(kNow);
    listing.logs.push_back({
        NS::str("/log"), NS::FileAttributes{NS::FileAttributes::Kind::kRegular, 7, date, date}
    });
    zone.put("XST-3");
    std::ostringstream text;
    Inspection::printReports(listing, text);
    EXPECT_THAT(text.str(), testing::StartsWith("Logs\n* 2026-11-16 09:56:27          7  /log\n"));
}

TEST_F(ReportListing, TellsOfRetiredReportsAlone) {
    put(retired() / "Fennmoor_x.crash");
    EXPECT_THAT(plain(), HasSubstr("\nCreated last      none with a date\n"));
    EXPECT_EQ(json()["lastCreated"], "");
}

TEST_F(ReportListing, ShowsAFileThatCannotBeLookedAt) {
    Inspection::ReportListing listing;
    listing.logs.push_back({NS::str("/log"), std::nullopt});
    std::ostringstream text;
    Inspection::printReports(listing, text);
    EXPECT_THAT(text.str(), testing::StartsWith("Logs\n                  cannot be read  /log\n"));
    std::ostringstream written;
    Inspection::printReportsAsJson(listing, written);
    EXPECT_EQ(Json::parse(written.str())["logs"],
              Json::parse(R"([{"path":"/log","newest":false}])"));
}

TEST_F(ReportListing, IsWrittenAsJson) {
    put(report("Other.spin"), "123");
    modify(report("Other.spin"), 1794812187);
    const Json listing = json();
    const Json& file = listing["otherReports"][0];
    EXPECT_EQ(file["path"], report("Other.spin"));
    EXPECT_EQ(file["modified"], Json::parse(R"({"$date":"2026-11-16T06:56:27Z"})"));
    EXPECT_TRUE(file["created"].contains("$date"));
    EXPECT_EQ(file["size"], 3);
    EXPECT_EQ(file["newest"], true);
    EXPECT_EQ(listing["logs"], Json::array());
    EXPECT_EQ(listing["reports"], Json::array());
    EXPECT_EQ(listing["lastCreated"], nullptr);
    EXPECT_EQ(listing["renameLog"], "/tmp/rn_items");
}

TEST_F(ReportListing, ShowsANameThatIsNoText) {
    put(report("Fennmoor_\xE9\x1b.crash"));
    EXPECT_THAT(plain(), HasSubstr("/Fennmoor_\\xe9\\x1b.crash\n"));
    const std::string bytes = json()["reports"][0]["path"]["$bytes"];
    EXPECT_THAT(bytes, testing::EndsWith("/Fennmoor_%E9%1B.crash"));
}

} // namespace
