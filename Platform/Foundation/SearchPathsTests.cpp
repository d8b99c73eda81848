#include "Platform/Foundation/SearchPaths.h"

#include "Tests/Support/PrivateFolders.h"
#include "Tests/Support/ScopedVariable.h"

#include <gtest/gtest.h>

#include <pwd.h>
#include <unistd.h>

namespace {

using Directory = NS::SearchPathDirectory;
using Domain = NS::SearchPathDomain;

std::string folder(Directory directory, Domain domain) {
    return NS::searchPathForDirectoryInDomain(directory, domain)->utf8();
}

class SearchPaths : public Tests::FolderTest {
  protected:
    Tests::ScopedVariable home{"HOME", "/home/mia"};
    Tests::ScopedVariable data{"XDG_DATA_HOME", std::nullopt};
    Tests::ScopedVariable state{"XDG_STATE_HOME", std::nullopt};
    Tests::ScopedVariable config{"XDG_CONFIG_HOME", std::nullopt};
};

TEST_F(SearchPaths, StandBelowTheHomeFolder) {
    EXPECT_EQ(NS::homeDirectory()->utf8(), "/home/mia");
    EXPECT_EQ(folder(Directory::kApplicationSupport, Domain::kUser), "/home/mia/.local/share");
    EXPECT_EQ(folder(Directory::kLibrary, Domain::kUser), "/home/mia/.local/state");
    EXPECT_EQ(NS::preferencesDirectory()->utf8(), "/home/mia/.config/Quorvane");
}

TEST_F(SearchPaths, FollowTheEnvironmentAtEachCall) {
    data.put("/data");
    state.put("/state");
    config.put("/config");
    EXPECT_EQ(folder(Directory::kApplicationSupport, Domain::kUser), "/data");
    EXPECT_EQ(folder(Directory::kLibrary, Domain::kUser), "/state");
    EXPECT_EQ(NS::preferencesDirectory()->utf8(), "/config/Quorvane");
    data.put("/elsewhere");
    EXPECT_EQ(folder(Directory::kApplicationSupport, Domain::kUser), "/elsewhere");
}

TEST_F(SearchPaths, IgnoreAVariableThatIsEmptyOrRelative) {
    data.put("");
    state.put("state");
    config.put("./config");
    EXPECT_EQ(folder(Directory::kApplicationSupport, Domain::kUser), "/home/mia/.local/share");
    EXPECT_EQ(folder(Directory::kLibrary, Domain::kUser), "/home/mia/.local/state");
    EXPECT_EQ(NS::preferencesDirectory()->utf8(), "/home/mia/.config/Quorvane");
}

TEST_F(SearchPaths, NameTheMachinesOwnFolders) {
    EXPECT_EQ(folder(Directory::kLibrary, Domain::kLocal), "/Library");
    EXPECT_EQ(folder(Directory::kApplicationSupport, Domain::kLocal),
              "/Library/Application Support");
}

TEST_F(SearchPaths, FallBackOnThePasswordDatabase) {
    const passwd* const user = ::getpwuid(::getuid());
    const std::string expected = user == nullptr ? "/" : user->pw_dir;
    for (const auto& value : {std::optional<std::string>(), std::optional<std::string>(""),
                              std::optional<std::string>("relative")}) {
        home.put(value);
        EXPECT_EQ(NS::homeDirectory()->utf8(), expected);
    }
}

TEST_F(SearchPaths, KeepAHomeFolderThatIsNotUtf8) {
    home.put("/home/ren\xE9");
    EXPECT_EQ(NS::homeDirectory()->fileSystemRepresentation(), "/home/ren\xE9");
    EXPECT_EQ(NS::searchPathForDirectoryInDomain(Directory::kLibrary, Domain::kUser)
                  ->fileSystemRepresentation(),
              "/home/ren\xE9/.local/state");
}

} // namespace
