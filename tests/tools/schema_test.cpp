// What the rows of the schemas say, beside the page on the files and the files that boards get.
#include <gtest/gtest.h>

#include <filesystem>
#include <regex>

#include "confcheck/config_files.h"
#include "ini_file/file_config.h"
#include "support/files.h"

namespace {

namespace fs = std::filesystem;

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

// The first start adds the identity and the items of the auto-save file.
bool isDelivered(confcheck::eKind kind) {
    using confcheck::eKind;
    return kind != eKind::IDENTITY && kind != eKind::DOUBLES && kind != eKind::BYTES &&
           kind != eKind::TEXTS;
}

TEST(Schema, DeliveredFilesHaveEachKey) {
    const fs::path deploy = TEST_DEPLOY_DIR;
    for (int devType = 0; devType <= 3; ++devType) {
        for (const auto& file : confcheck::configFiles(devType)) {
            fs::path path = deploy / "families/KOL" / file.name;
            if (devType != 3 || !fs::exists(path)) {
                path = deploy / "etc/quenvel/config/system" / file.name;
            }
            core_utils::CFileConfig config;
            ASSERT_TRUE(config.open(path, "rb")) << path;
            for (const auto& item : file.items) {
                if (!isDelivered(item.kind)) continue;
                char value[81];
                int size = sizeof value;
                EXPECT_TRUE(config.readValue(item.section.c_str(), item.key.c_str(), value, &size))
                    << path << ' ' << item.section << ' ' << item.key;
            }
        }
    }
}

}  // namespace
