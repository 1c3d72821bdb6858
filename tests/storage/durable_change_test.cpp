#include "storage/durable_change.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <functional>

#include "support/files.h"

namespace {

const std::string FOLDER = support::configPath("folder");
const std::string PATH = FOLDER + "/file.cfg";
const std::string NEW_PATH = PATH + ".new";
const std::string LINK = FOLDER + "/link";

struct stat statusOf(const std::string& path) {
    struct stat status {};
    EXPECT_EQ(0, lstat(path.c_str(), &status)) << path;
    return status;
}

TEST(DurableChange, ANewFileTakesTheNameWhereItCan) {
    const struct {
        const char* what;
        std::function<int()> prepare;
        const std::string& path;
        bool newFile;
    } rows[] = {
        {"left by a crash",
         [] {
             support::writeFile(NEW_PATH, "longer than the file");
             return 0;
         },
         PATH, true},
        {"symbolic link", [] { return symlink("file.cfg", LINK.c_str()); }, LINK, true},
        {"hard link", [] { return link(PATH.c_str(), LINK.c_str()); }, PATH, false},
        {"a folder in the way", [] { return mkdir(NEW_PATH.c_str(), 0700); }, PATH, false},
        {"mount point", [] { return mount(PATH.c_str(), PATH.c_str(), nullptr, MS_BIND, nullptr); },
         PATH, false},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        std::filesystem::create_directory(FOLDER);
        support::writeFile(PATH, "head\nbody\n");
        ASSERT_EQ(0, chmod(PATH.c_str(), 0640));
        ASSERT_EQ(0, row.prepare());
        const int descriptor = open(row.path.c_str(), O_RDWR);
        const ino_t before = statusOf(PATH).st_ino;
        EXPECT_TRUE(core_utils::changeDurably(descriptor, row.path.c_str(), 5, 5, "soul\nmind\n"));
        EXPECT_EQ("head\nsoul\nmind\n", support::readFile(PATH));
        EXPECT_EQ(row.newFile, before != statusOf(PATH).st_ino);
        EXPECT_EQ(0640U, statusOf(PATH).st_mode & 07777U);
        EXPECT_EQ(std::filesystem::is_directory(NEW_PATH), std::filesystem::exists(NEW_PATH));
        // The descriptor goes on with the file that has the name; one length stays in it.
        const ino_t named = statusOf(PATH).st_ino;
        EXPECT_TRUE(core_utils::changeDurably(descriptor, row.path.c_str(), 5, 4, "SOUL"));
        EXPECT_EQ("head\nSOUL\nmind\n", support::readFile(row.path));
        EXPECT_EQ(named, statusOf(PATH).st_ino);
        close(descriptor);
        umount(PATH.c_str());
        std::filesystem::remove_all(FOLDER);
    }
}

}  // namespace
