#include "Programs/QuorvaneHost/TrashRecords.h"

#include "Programs/QuorvaneHost/DriveTree.h"
#include "Tests/Support/PrivateFolders.h"
#include "Tests/Support/Process.h"

#include <fstream>

namespace {

class TrashRecordsTest : public Tests::FolderTest {
  protected:
    TrashRecords open() const {
        return {file, [](const std::string&, const TrashRecords::Record&) {
                    return true;
                }};
    }
    static std::string originOf(const TrashRecords& records, const std::string& name,
                                std::uint64_t inode) {
        const auto record = records.find(name, inode);
        return record ? record->origin : "none";
    }
    void append(const std::string& text) const { std::ofstream(file, std::ios::app) << text; }

    std::string file = (folders.root() / "trash.log").string();
};

TEST_F(TrashRecordsTest, OutliveTheirObject) {
    open().add({
        {"a b\n", {7, "/Docs/\xFF%"}},
        {"c",     {8, "/c"}         }
    });
    const TrashRecords again = open();
    EXPECT_EQ(originOf(again, "a b\n", 7), "/Docs/\xFF%");
    EXPECT_EQ(originOf(again, "c", 8), "/c");
}

TEST_F(TrashRecordsTest, CountForTheVeryItemOnly) {
    TrashRecords records = open();
    records.add({
        {"a", {7, "/a"}}
    });
    EXPECT_EQ(originOf(records, "a", 8), "none");
    EXPECT_EQ(originOf(records, "b", 7), "none");
}

TEST_F(TrashRecordsTest, AreRemovedForGood) {
    TrashRecords records = open();
    records.add({
        {"a", {7, "/a"}},
        {"b", {8, "/b"}}
    });
    records.remove({"a", "unknown"});
    EXPECT_FALSE(records.contains("a"));
    const TrashRecords again = open();
    EXPECT_FALSE(again.contains("a"));
    EXPECT_TRUE(again.contains("b"));
}

TEST_F(TrashRecordsTest, AreLeftOutWhenTheyAreNotToBeKept) {
    open().add({
        {"a", {7, "/a"}},
        {"b", {8, "/b"}}
    });
    const TrashRecords kept(file, [](const std::string& name, const auto&) { return name == "b"; });
    EXPECT_FALSE(open().contains("a"));
    EXPECT_TRUE(open().contains("b"));
}

TEST_F(TrashRecordsTest, LeaveOutALineThatACrashCutOff) {
    open().add({
        {"a", {7, "/a"}}
    });
    append("+ b 8 /Docs/half");
    EXPECT_TRUE(open().contains("a"));
    EXPECT_FALSE(open().contains("b"));
}

TEST_F(TrashRecordsTest, LeaveOutLinesThatAreDamaged) {
    append("garbage\n+ a\n+ b x /b\n+ c%zz 1 /c\n+ d 4 /d%\n\n\x01\x02\n+ e 5 /e\n");
    const TrashRecords records = open();
    for (const char* const name : {"a", "b", "c", "d"}) {
        EXPECT_FALSE(records.contains(name)) << name;
    }
    EXPECT_EQ(originOf(records, "e", 5), "/e");
}

TEST_F(TrashRecordsTest, KeepTheirFileSmall) {
    for (int i = 0; i < 100; ++i) {
        TrashRecords records = open();
        records.add({
            {"a", {7, "/a"}}
        });
        records.remove({"a"});
    }
    (void)open();
    EXPECT_EQ(Tests::contentsOf(file), "");
}

TEST_F(TrashRecordsTest, AreRefusedWhereTheyCannotBeWritten) {
    file = (folders.root() / "missing/trash.log").string();
    EXPECT_THROW(open(), Refusal);
}

} // namespace
