#include "storage/file_config.h"

#include <gtest/gtest.h>

#include "support/files.h"

namespace {

TEST(FileConfig, KeepsSecondOpenFromReplacingTheFirst) {
    const std::string path = support::configPath("a.cfg");
    support::writeFile(path, "[Sec]\nKey=1\n");
    core_utils::CFileConfig file;
    ASSERT_TRUE(file.open(path, "r+b"));
    EXPECT_FALSE(file.open("/dev/null", "r+b"));
    int value = 0;
    EXPECT_TRUE(file.read("Sec", "Key", value));
    EXPECT_EQ(1, value);
}

}  // namespace
