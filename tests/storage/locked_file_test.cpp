#include "storage/locked_file.h"

#include "support/files.h"

namespace {

// Where 32 bits no longer hold a position, and at the start of the file that this leaves.
TEST(LockedFile, WritesReadsAndCutsAtAnyPosition) {
    const std::string path = support::configPath("locked.cfg");
    for (const std::int64_t base : {std::int64_t{5} << 30, std::int64_t{0}}) {
        core_utils::CLockedFile file;
        char buffer[4] = {};
        fpos_t position = {};
        std::int64_t size = -1;
        EXPECT_FALSE(file.open(path.c_str(), "x")) << "no mode";
        EXPECT_FALSE(file.readBlock(buffer, 0) || file.writeBlock("", 0) || file.truncate(0) ||
                     file.seek(0, SEEK_SET) || file.getPosition(position) || file.getSize(size) ||
                     file.setPosition(position) || file.isAtEnd() || file.isRegular() ||
                     file.setUnbuffered() || file.flush() || file.close())
            << "closed";
        ASSERT_TRUE(file.open(path.c_str(), "w+b"));
        EXPECT_FALSE(file.open(path.c_str(), "w+b")) << "the first stream stays";
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
    core_utils::CLockedFile null;
    ASSERT_TRUE(null.open("/dev/null", "w"));
    EXPECT_FALSE(null.writeBlock("x", 1)) << "written, but not in storage";
}

}  // namespace
