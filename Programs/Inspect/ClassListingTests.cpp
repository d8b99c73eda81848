#include "Programs/Inspect/ClassListing.h"

#include "QVApi/Content/Testing/ContentTables.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <sstream>
#include <string>
#include <vector>

namespace {

using Tests::ExpectedClass;

class ClassListing : public testing::Test {
  protected:
    // What is listed, class by class; the rows of a mapping, which have no order, are sorted.
    static std::vector<std::string> listed() {
        std::stringstream text;
        Inspection::printClasses(text);
        std::vector<std::string> classes;
        for (std::string line; std::getline(text, line);) {
            if (!line.starts_with(' ')) {
                classes.emplace_back();
            }
            classes.back() += line + '\n';
        }
        for (std::string& each : classes) {
            each = withSortedMapping(each);
        }
        std::ranges::sort(classes);
        return classes;
    }
    // The same of what is written down of the classes.
    static std::vector<std::string> expected() {
        std::vector<std::string> classes;
        for (const ExpectedClass& each : Tests::expectedClasses()) {
            classes.push_back(
                withSortedMapping(chainOf(each) + '\n' + mappingOf(each) + archiveListOf(each)));
        }
        std::ranges::sort(classes);
        return classes;
    }

  private:
    static std::string chainOf(const ExpectedClass& itemClass) {
        return itemClass.name + " : " +
               (itemClass.superclass == "NSObject"
                    ? "NSObject"
                    : chainOf(Tests::expectedClass(itemClass.superclass)));
    }
    static std::string mappingOf(const ExpectedClass& itemClass) {
        std::size_t width = 0;
        for (const auto& row : itemClass.mapping) {
            width = std::max(width, row.property.size());
        }
        std::string lines = itemClass.mapping.empty() ? "    mapping (empty)\n" : "    mapping\n";
        for (const auto& row : itemClass.mapping) {
            lines += "        " + row.property + std::string(width - row.property.size() + 2, ' ') +
                     row.reply + '\n';
        }
        return lines;
    }
    static std::string archiveListOf(const ExpectedClass& itemClass) {
        std::string lines =
            itemClass.archived.empty() ? "    archived (nothing)\n" : "    archived\n";
        for (const std::string& key : itemClass.archived) {
            lines += "        " + key + '\n';
        }
        return lines;
    }
    static std::string withSortedMapping(const std::string& text) {
        std::istringstream in(text);
        std::vector<std::string> lines;
        for (std::string line; std::getline(in, line);) {
            lines.push_back(line + '\n');
        }
        const auto isArchived = [](const std::string& line) {
            return line.starts_with("    archived");
        };
        std::sort(lines.begin() + 2, std::ranges::find_if(lines, isArchived));
        std::string sorted;
        for (const std::string& line : lines) {
            sorted += line;
        }
        return sorted;
    }
};

TEST_F(ClassListing, HasOfEveryClassItsChainMappingAndArchiveList) {
    EXPECT_EQ(listed().size(), 27U);
    EXPECT_EQ(listed(), expected());
}

} // namespace
