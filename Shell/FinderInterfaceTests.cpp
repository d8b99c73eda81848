#include "Shell/Testing/ServiceFixture.h"

#include <regex>
#include <sstream>

namespace {

// The extension's own interface in a description, one line for each element.
std::string interfaceIn(const std::string& description) {
    const std::string begin =
        std::string(" <interface name=\"") + Shell::FinderInterface::kInterface + "\">\n";
    const std::string end = " </interface>\n";
    const std::size_t from = description.find(begin);
    const std::size_t to = description.find(end, from);
    if (from == std::string::npos || to == std::string::npos) {
        return "none";
    }
    const std::string text = description.substr(from, to + end.size() - from);
    return std::regex_replace(text, std::regex("\">\n +</property>"), "\"/>");
}

class FinderInterface : public Tests::ServiceTest {
  protected:
    const std::string described = interfaceIn(Tests::contentsOf(INTERFACE_FILE));
};

TEST_F(FinderInterface, IsServedAsItsDescriptionSays) {
    start();
    // The answer is one string, quoted.
    EXPECT_EQ(interfaceIn(peer->introspection()), described);
    EXPECT_NE(described, "none");
}

TEST_F(FinderInterface, IsTheOneOnItsPage) {
    const std::string page = Tests::contentsOf(FINDER_BUS_PAGE);
    std::istringstream lines(described);
    std::string block;
    for (std::string line; std::getline(lines, line);) {
        block += "    " + line + "\n";
    }
    EXPECT_NE(page.find("\n" + block), std::string::npos);
}

TEST_F(FinderInterface, HasItsNamesOnItsPage) {
    const std::string page = Tests::contentsOf(FINDER_BUS_PAGE);
    using namespace Shell::FinderInterface;
    for (const char* const name :
         {kName, kWaitingName, kObject, kErrorInvalidArgs, kErrorLimitsExceeded, kErrorNotInMenu,
          kErrorTooLate, kErrorRaised}) {
        EXPECT_NE(page.find(std::string("`") + name + "`"), std::string::npos) << name;
    }
}

} // namespace
