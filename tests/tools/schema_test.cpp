// The rows of the schemas beside the page on the files.
#include <gtest/gtest.h>

#include <regex>

#include "confcheck/config_files.h"
#include "support/files.h"

namespace {

TEST(Schema, PageNamesEachKeyWithItsUnit) {
    const std::string page = support::readFile(TEST_CONFIGURATION_FILES_PAGE);
    for (const auto& file : confcheck::configFiles(2)) {
        EXPECT_NE(std::string::npos, page.find("### " + file.name));
        for (const auto& item : file.items) {
            const std::string unit = item.unit.empty() ? "" : " \\(([^)]* )?" + item.unit + "\\)";
            EXPECT_TRUE(std::regex_search(page, std::regex("\\b" + item.key + "\\b" + unit)))
                << item.key << ' ' << item.unit;
        }
    }
}

}  // namespace
