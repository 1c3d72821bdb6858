#include "storage/file_system.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include "storage/file_find.h"
#include "support/files.h"

namespace {

using namespace std::string_literals;
using core_utils::CFileSystem;
using support::readFile;
using support::writeFile;

const std::string ROOT = "/dev/shm/";  // empty for each test

TEST(FileSystem, CopyRefusesCleanlyAndLeavesTheDestinationAlone) {
    alarm(60);  // ends the program if a FIFO makes it wait
    ASSERT_EQ(0, chdir(ROOT.c_str()) + mkfifo("fifo", 0600));
    EXPECT_TRUE(CFileSystem::makeDirectory("dir"));
    EXPECT_TRUE(CFileSystem::makeDirectory("dir")) << "it exists already";
    const int huge = open("huge", O_CREAT | O_WRONLY, 0600);
    ASSERT_EQ(0, ftruncate(huge, off_t{3} << 30));
    close(huge);
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

TEST(FileSystem, MakesEveryDirectoryOfAPath) {
    ASSERT_EQ(0, chdir(ROOT.c_str()));
    const std::string longest = ROOT + std::string(246, 'd');
    EXPECT_FALSE(CFileSystem::makeDirectoryPath(""));
    EXPECT_FALSE(CFileSystem::makeDirectoryPath(longest + "e"));
    EXPECT_TRUE(CFileSystem::makeDirectoryPath("/dev/full/below")) << "as far as it gets";
    for (const std::string& path : {"a\\b/c"s, ROOT + "x//y/", "\\relative"s, longest})
        EXPECT_TRUE(CFileSystem::makeDirectoryPath(path)) << path;
    for (const std::string& path : {"a/b/c"s, ROOT + "x/y", "relative"s, longest})
        EXPECT_TRUE(CFileSystem::removeDirectory(path)) << path;
}

TEST(FileSystem, FinderDescribesEachMatchAndPrintsWhyThereIsNone) {
    core_utils::CFileFind finder;
    core_utils::sFoundFile found = {};
    const std::string deep = ROOT + std::string(200, 'd') + "/";
    ASSERT_TRUE(CFileSystem::makeDirectory(ROOT + "b.dir") && CFileSystem::makeDirectory(deep));
    for (const std::string& path : {ROOT + "a.txt", ROOT + "c.txt", deep + std::string(60, 'f')})
        writeFile(path, "");
    ASSERT_EQ(0, chmod((ROOT + "c.txt").c_str(), 0444) + symlink("none", (ROOT + "z.lnk").c_str()));
    std::string all;
    for (bool more = finder.findFirstFile(ROOT + "[abc].*", found); more;
         more = finder.findNextFile(found))
        all += std::string(found.szPath).substr(ROOT.size()) + (found.bDirectory ? " dir" : "") +
               (found.bReadOnly ? " read-only" : "") + "\n";
    EXPECT_EQ("a.txt\nb.dir/ dir\nc.txt read-only\n", all);
    EXPECT_FALSE(finder.findNextFile(found)) << "once past the end";

    int error = 0;
    for (const std::string& pattern : {ROOT + "*.none", deep + "*", ROOT + "*.lnk"})
        EXPECT_EQ("CFileFind::findFirstFile error " + std::to_string(++error) + "\n",
                  support::printedBy([&] { EXPECT_FALSE(finder.findFirstFile(pattern, found)); }));
}

}  // namespace
