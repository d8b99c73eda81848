#include "Programs/Finder/Completion.h"

#include "Tests/Support/PrivateFolders.h"
#include "Tests/Support/Process.h"
#include "Tests/Support/ScopedVariable.h"

#include <fstream>

namespace {

// A bash that has loaded the script, beside a quorvane-finder that shows a fixed menu.
class BashCompletion : public Tests::FolderTest {
  protected:
    BashCompletion() {
        const auto finder = folders.root() / "quorvane-finder";
        std::ofstream(finder) << "#!/bin/sh\nprintf '%s\\n' 'QV: Share' 'QV: Show Properties'\n";
        std::filesystem::permissions(finder, std::filesystem::perms::owner_all);
        std::ofstream(folders.root() / "script") << completionFor("bash");
    }

    // What it offers for the last of the words, as the shell takes a line apart.
    std::string offered(const std::string& words, int index, const std::string& line = "") {
        const auto program = folders.root() / "try";
        std::ofstream(program) << "compopt() { :; }\nsource '"
                               << (folders.root() / "script").string() << "'\nCOMP_WORDS=(" << words
                               << ")\nCOMP_CWORD=" << index << "\nCOMP_LINE=$(cat <<'END'\n"
                               << line << "\nEND\n)\nCOMP_POINT=${#COMP_LINE}"
                               << "\n_quorvane_finder\nprintf '%s|' \"${COMPREPLY[@]}\"\n";
        Tests::Process bash("/bin/bash", {program.string()}, folders.root() / "out",
                            folders.root() / "err");
        EXPECT_EQ(bash.waitForExit(), 0) << bash.errors();
        EXPECT_EQ(bash.errors(), "");
        return bash.output();
    }

    Tests::ScopedVariable path{"PATH", folders.root().string() + ":/usr/bin:/bin"};
};

TEST_F(BashCompletion, OffersTheCommands) {
    EXPECT_EQ(offered("quorvane-finder ''", 1),
              "status|menu|pick|observe|completion|--help|--version|");
    EXPECT_EQ(offered("quorvane-finder m", 1), "menu|");
}

TEST_F(BashCompletion, OffersTitles) {
    EXPECT_EQ(offered("quorvane-finder pick QV", 2, "quorvane-finder pick QV"),
              "QV:\\ Delete|QV:\\ Move\\ To\\ Trash|QV:\\ Restore|QV:\\ Share|"
              "QV:\\ Show\\ Properties|");
}

TEST_F(BashCompletion, OffersTheRestOfATitleBehindItsColon) {
    EXPECT_EQ(offered("quorvane-finder pick QV : '\\ Sho'", 4, "quorvane-finder pick QV:\\ Sho"),
              "\\ Show\\ Properties|");
}

TEST_F(BashCompletion, OffersATitleInQuotesAsItStands) {
    EXPECT_EQ(offered("quorvane-finder pick '\"QV: Sho'", 2, "quorvane-finder pick \"QV: Sho"),
              "QV: Show Properties|");
}

TEST_F(BashCompletion, OffersPathsBehindTheTitle) {
    std::ofstream(folders.root() / "some file") << "x";
    const std::string typed = (folders.root() / "some").string();
    EXPECT_EQ(offered("quorvane-finder pick '\"QV: Share\"' " + typed, 3,
                      "quorvane-finder pick \"QV: Share\" " + typed),
              typed + " file|");
}

TEST_F(BashCompletion, OffersKindsAndOptions) {
    EXPECT_EQ(offered("quorvane-finder menu --kind s", 3), "sidebar|");
    EXPECT_EQ(offered("quorvane-finder menu --t", 2), "--target|--timeout|");
    EXPECT_EQ(offered("quorvane-finder observe ''", 2), "begin|end|");
}

TEST(Completion, IsThereForEveryShellThatItNames) {
    for (const std::string& shell : completionShells()) {
        EXPECT_NE(completionFor(shell).find("quorvane-finder"), std::string::npos) << shell;
    }
    EXPECT_EQ(completionShells(), (std::vector<std::string>{"bash", "fish", "zsh"}));
}

} // namespace
