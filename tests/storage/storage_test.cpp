#include <gtest/gtest.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

#include <functional>

#include "storage/file_find.h"
#include "storage/file_system.h"
#include "storage/locked_file.h"
#include "support/files.h"

namespace {

using namespace std::string_literals;
using core_utils::CFileSystem;
using core_utils::CLockedFile;
using support::readFile;
using support::writeFile;

const std::string ROOT = "/dev/shm/";  // empty for each test

struct Storage : testing::Test {
    Storage() { EXPECT_EQ(0, chdir(ROOT.c_str())); }
};

// Where 32 bits no longer hold a position, and at the start of the file that this leaves.
TEST_F(Storage, LockedFileWritesReadsAndCutsAtAnyPosition) {
    for (const std::int64_t base : {std::int64_t{5} << 30, std::int64_t{0}}) {
        CLockedFile file;
        char buffer[4] = {};
        fpos_t position = {};
        std::int64_t size = -1;
        EXPECT_FALSE(file.open("locked", "x")) << "no mode";
        EXPECT_FALSE(file.readBlock(buffer, 0) || file.writeBlock("", 0) || file.truncate(0) ||
                     file.seek(0, SEEK_SET) || file.getPosition(position) || file.getSize(size) ||
                     file.setPosition(position) || file.isAtEnd() || file.isRegular() ||
                     file.setUnbuffered() || file.flush() || file.close())
            << "closed";
        ASSERT_TRUE(file.open("locked", "w+b"));
        EXPECT_FALSE(file.open("locked", "w+b")) << "the first stream stays";
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
    CLockedFile null;
    ASSERT_TRUE(null.open("/dev/null", "w"));
    EXPECT_FALSE(null.writeBlock("x", 1)) << "written, but not in storage";
}

TEST_F(Storage, LockedFileGivesTheNameToANewFileWhereItCan) {
    const struct {
        const char* what;
        std::function<int()> prepare;
        const char* path;
        bool newFile;
    } rows[] = {
        {"left by a crash", [] { return symlink("none", "file.new"); }, "file", true},
        {"symbolic link", [] { return symlink("file", "link"); }, "link", true},
        {"hard link", [] { return link("file", "link"); }, "file", false},
        {"a folder in the way", [] { return mkdir("file.new", 0700); }, "file", false},
        {"mount point", [] { return mount("file", "file", nullptr, MS_BIND, nullptr); }, "file",
         false},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        writeFile("file", "head\nbody\n");
        ASSERT_EQ(0, chmod("file", 0640) + row.prepare());
        const auto inode = [] {
            struct stat status {};
            EXPECT_EQ(0, lstat("file", &status));
            EXPECT_EQ(0640U, status.st_mode & 07777U);
            return status.st_ino;
        };
        CLockedFile file;
        ASSERT_TRUE(file.open(row.path, "r+b"));
        const ino_t before = inode();
        EXPECT_TRUE(file.replace(5, 5, "soul\nmind\n"));
        EXPECT_EQ("head\nsoul\nmind\n", readFile("file"));
        const ino_t named = inode();
        EXPECT_EQ(row.newFile, before != named);
        // The stream goes on with the file that has the name; one length stays in it.
        EXPECT_TRUE(file.replace(5, 4, "SOUL"));
        EXPECT_EQ("head\nSOUL\nmind\n", readFile(row.path));
        EXPECT_EQ(named, inode());
        umount("file");
        for (const char* name : {"file", "file.new", "link"})
            remove(name);
    }
}

TEST_F(Storage, FileSystemCopyRefusesCleanlyAndLeavesTheDestinationAlone) {
    ASSERT_EQ(0, mkfifo("fifo", 0600));
    EXPECT_TRUE(CFileSystem::makeDirectory("dir"));
    EXPECT_TRUE(CFileSystem::makeDirectory("dir")) << "it exists already";
    writeFile("huge", "");
    ASSERT_EQ(0, truncate("huge", off_t{3} << 30));
    writeFile("old", "old");
    for (const char* source : {"none", "dir", "/proc", "huge", "fifo"}) {
        EXPECT_FALSE(CFileSystem::copyFile(source, "old", false)) << source;
        EXPECT_EQ("old", readFile("old")) << source;
    }
    const std::string bytes("a\0\n\xFF", 4);
    writeFile("new", bytes);
    EXPECT_FALSE(CFileSystem::copyFile("new", "old", true));
    EXPECT_EQ("old", readFile("old"));
    EXPECT_FALSE(CFileSystem::copyFile("new", "fifo", true));
    EXPECT_FALSE(CFileSystem::copyFile("new", "/dev/full", false));
    EXPECT_TRUE(CFileSystem::copyFile("new", "new", false));
    EXPECT_TRUE(CFileSystem::copyFile("new", "created", true));
    EXPECT_EQ(bytes, readFile("created"));
}

TEST_F(Storage, FileSystemMakesEveryDirectoryOfAPath) {
    const std::string longest = ROOT + std::string(246, 'd');
    EXPECT_FALSE(CFileSystem::makeDirectoryPath(""));
    EXPECT_FALSE(CFileSystem::makeDirectoryPath(longest + "e"));
    EXPECT_TRUE(CFileSystem::makeDirectoryPath("/dev/full/below")) << "as far as it gets";
    for (const std::string& path : {"a\\b/c"s, ROOT + "x//y/", "\\relative"s, longest})
        EXPECT_TRUE(CFileSystem::makeDirectoryPath(path)) << path;
    for (const std::string& path : {"a/b/c"s, ROOT + "x/y", "relative"s, longest})
        EXPECT_TRUE(CFileSystem::removeDirectory(path)) << path;
}

TEST_F(Storage, FinderDescribesEachMatchAndPrintsWhyThereIsNone) {
    core_utils::CFileFind finder;
    core_utils::sFoundFile found = {};
    const std::string deep = std::string(200, 'd') + "/";
    ASSERT_TRUE(CFileSystem::makeDirectory("b.dir") && CFileSystem::makeDirectory(deep));
    for (const std::string& path : {"a.txt"s, "c.txt"s, deep + std::string(60, 'f')})
        writeFile(path, "");
    ASSERT_EQ(0, chmod("c.txt", 0444) + symlink("none", "z.lnk"));
    std::string all;
    for (bool more = finder.findFirstFile("[abc].*", found); more;
         more = finder.findNextFile(found))
        all += std::string(found.szPath) + (found.bDirectory ? " dir" : "") +
               (found.bReadOnly ? " read-only" : "") + "\n";
    EXPECT_EQ("a.txt\nb.dir/ dir\nc.txt read-only\n", all);
    EXPECT_FALSE(finder.findNextFile(found)) << "once past the end";

    int error = 0;
    for (const std::string& pattern : {"*.none"s, deep + "*", "*.lnk"s})
        EXPECT_EQ("CFileFind::findFirstFile error " + std::to_string(++error) + "\n",
                  support::printedBy([&] { EXPECT_FALSE(finder.findFirstFile(pattern, found)); }));
    EXPECT_TRUE(finder.close());
}

}  // namespace
