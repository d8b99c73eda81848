#include "Platform/Foundation/UserDefaults.h"

#include "Platform/Foundation/Null.h"
#include "Platform/Foundation/Number.h"
#include "Platform/Foundation/ProcessInfo.h"
#include "Platform/Foundation/Testing/RaisedException.h"
#include "Tests/Support/PrivateFolders.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sstream>
#include <thread>

namespace {

class UserDefaults : public Tests::FolderTest {
  protected:
    std::filesystem::path file() const {
        return folders.config() / "Quorvane" /
               (NS::ProcessInfo::processInfo()->processName()->utf8() + ".plist");
    }
    void writeFile(std::string_view contents) const {
        std::filesystem::create_directories(file().parent_path());
        std::ofstream(file(), std::ios::binary) << contents;
    }
    std::string fileContents() const {
        std::ostringstream contents;
        contents << std::ifstream(file(), std::ios::binary).rdbuf();
        return contents.str();
    }

    NS::Ref<NS::UserDefaults> defaults = NS::UserDefaults::standardUserDefaults();
    NS::Ref<NS::String> key = NS::str("key");
};

TEST_F(UserDefaults, AreEmptyAtFirst) {
    EXPECT_FALSE(defaults->objectForKey(*key));
    EXPECT_FALSE(defaults->boolForKey(*key));
    EXPECT_FALSE(std::filesystem::exists(file()));
}

TEST_F(UserDefaults, KeepWhatIsSetInTheUsersFolder) {
    defaults->setBool_forKey(true, *key);
    defaults->setObject_forKey(NS::str("value"), *NS::str("other"));
    EXPECT_TRUE(defaults->boolForKey(*key));
    EXPECT_EQ(defaults->objectForKey(*NS::str("other"))->description()->utf8(), "value");
    EXPECT_TRUE(fileContents().starts_with("bplist00"));
}

TEST_F(UserDefaults, AreReadFromAFileThatSomebodyWroteInXML) {
    writeFile(
        "<plist><dict><key>key</key><true/><key>other</key><string>v</string></dict></plist>");
    EXPECT_TRUE(defaults->boolForKey(*key));
    defaults->setBool_forKey(false, *key);
    EXPECT_FALSE(defaults->boolForKey(*key));
    EXPECT_EQ(defaults->objectForKey(*NS::str("other"))->description()->utf8(), "v");
}

TEST_F(UserDefaults, AreForTheUserAlone) {
    defaults->setBool_forKey(true, *key);
    using std::filesystem::perms;
    const perms mode = std::filesystem::status(file()).permissions();
    EXPECT_EQ(mode, perms::owner_read | perms::owner_write);
}

TEST_F(UserDefaults, LeaveNothingButTheFileInTheFolder) {
    defaults->setBool_forKey(true, *key);
    defaults->setBool_forKey(false, *key);
    const std::filesystem::directory_iterator entries(file().parent_path());
    EXPECT_EQ(std::distance(begin(entries), end(entries)), 1);
}

TEST_F(UserDefaults, ForgetWhatIsRemovedOrSetToNil) {
    defaults->setBool_forKey(true, *key);
    defaults->removeObjectForKey(*key);
    EXPECT_FALSE(defaults->objectForKey(*key));
    defaults->setBool_forKey(true, *key);
    defaults->setObject_forKey(nullptr, *key);
    EXPECT_FALSE(defaults->objectForKey(*key));
}

TEST_F(UserDefaults, ReadTruthFromNumbersAndTextsOnly) {
    const std::pair<NS::Ref<NS::Object>, bool> values[] = {
        {NS::Number::numberWithInt(2), true },
        {NS::Number::numberWithInt(0), false},
        {NS::str("YES"),               true },
        {NS::str("no"),                false},
        {NS::make<NS::Dictionary>(),   false},
    };
    for (const auto& [value, truth] : values) {
        defaults->setObject_forKey(value, *key);
        EXPECT_EQ(defaults->boolForKey(*key), truth) << value->description()->utf8();
    }
}

TEST_F(UserDefaults, RaiseForWhatNoPropertyListHolds) {
    defaults->setBool_forKey(true, *key);
    EXPECT_EQ(Tests::nameOfException([&] { defaults->setObject_forKey(NS::Null::null(), *key); }),
              NS::kInvalidArgumentException);
    EXPECT_TRUE(defaults->boolForKey(*key));
}

TEST_F(UserDefaults, ReadADamagedFileAsEmptyAndLeaveItUntilSomethingIsSet) {
    writeFile("bplist00 and then nonsense");
    EXPECT_FALSE(defaults->objectForKey(*key));
    EXPECT_EQ(fileContents(), "bplist00 and then nonsense");
    defaults->setBool_forKey(true, *key);
    EXPECT_TRUE(defaults->boolForKey(*key));
}

TEST_F(UserDefaults, FollowAChangeOfTheEnvironment) {
    defaults->setBool_forKey(true, *key);
    {
        const Tests::PrivateFolders others;
        EXPECT_FALSE(defaults->boolForKey(*key));
    }
    EXPECT_TRUE(defaults->boolForKey(*key));
}

TEST_F(UserDefaults, LoseASettingThatCannotBeWritten) {
    std::filesystem::remove_all(folders.config());
    std::ofstream(folders.config()) << "a file in the folder's place";
    defaults->setBool_forKey(true, *key);
    EXPECT_FALSE(defaults->boolForKey(*key));
}

TEST_F(UserDefaults, KeepTheSettingsOfAllThreads) {
    std::vector<std::thread> threads;
    for (int i = 0; i < 8; ++i) {
        threads.emplace_back(
            [&, i] { defaults->setBool_forKey(true, *NS::str(std::to_string(i))); });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    for (int i = 0; i < 8; ++i) {
        EXPECT_TRUE(defaults->boolForKey(*NS::str(std::to_string(i)))) << i;
    }
}

} // namespace
