#include "storage/locked_file.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include "ini_file/file_config.h"
#include "support/files.h"

namespace {

const std::string PATH = support::configPath("locked.cfg");

// At the start of a file, and where 32 bits no longer hold a position.
TEST(LockedFile, WritesReadsAndCutsAtAnyPosition) {
    for (const std::int64_t base : {std::int64_t{0}, std::int64_t{5} << 30}) {
        core_utils::CLockedFile file;
        char buffer[4] = {};
        fpos_t position;
        std::int64_t size = -1;
        EXPECT_FALSE(file.writeBlock("x", 1)) << "closed";
        EXPECT_FALSE(file.close());
        ASSERT_TRUE(file.open(PATH.c_str(), "w+b"));
        EXPECT_FALSE(file.open(PATH.c_str(), "w+b")) << "the first stream stays";
        ASSERT_TRUE(file.seek(base, SEEK_SET));
        EXPECT_TRUE(file.writeBlock("abcd", 4));
        EXPECT_TRUE(file.isAtEnd());
        EXPECT_TRUE(file.seek(base + 1, SEEK_SET));
        EXPECT_TRUE(file.getPosition(position));
        EXPECT_FALSE(file.isAtEnd());
        EXPECT_TRUE(file.readBlock(buffer, 3));
        EXPECT_FALSE(file.readBlock(buffer, 1)) << "the end";
        EXPECT_TRUE(file.rewind());
        EXPECT_TRUE(file.setPosition(position));
        EXPECT_TRUE(file.readBlock(buffer, 2));
        EXPECT_STREQ("bcd", buffer);
        EXPECT_TRUE(file.truncate(base + 2));
        EXPECT_TRUE(file.getSize(size));
        EXPECT_EQ(base + 2, size);
        EXPECT_TRUE(file.close());
    }
}

TEST(LockedFile, AConfigurationFileOfMoreThan2GiBIsOneLikeAnyOther) {
    support::writeFile(PATH, "[Sec]\nKey=1\n");
    const std::int64_t end = std::int64_t{3} << 30;
    ASSERT_EQ(0, truncate(PATH.c_str(), end));
    core_utils::CFileConfig file;
    ASSERT_TRUE(file.open(PATH, "r+b"));
    EXPECT_TRUE(file.write("Sec", "Key", 2));
    int value = 0;
    EXPECT_TRUE(file.read("Sec", "Key", value));
    EXPECT_EQ(2, value);
}

}  // namespace
