// What the system can do to a save: kill it, refuse to cut the file, cut a write short, or have
// the file replaced under it.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <random>
#include <string>

#include "ini_file/file_config.h"
#include "support/files.h"

namespace {

using core_utils::CFileConfig;

const std::string kPath = support::configPath("fault.cfg");
const std::string kHead = "# head\n[Sec]\nA=1\n";
const std::string kTail = "Z=26\n\n[Next]\n" + std::string(40, 'n') + "=1\n";

TEST(FileConfigFaults, AKilledSaveLeavesAllThatStandsBeforeTheLine) {
    const std::string forms[] = {kHead + "Key=1\n" + kTail, kHead + "Key=22\n" + kTail};
    std::mt19937 random(1);
    for (int round = 0; round < 150; ++round) {
        support::writeFile(kPath, forms[0]);
        const pid_t saver = fork();
        if (saver == 0) {
            CFileConfig file;
            file.open(kPath, "r+b");
            for (int value = 22;; value = 23 - value)
                file.write("Sec", "Key", value);
        }
        usleep(static_cast<useconds_t>(random() % 2000));
        kill(saver, SIGKILL);
        waitpid(saver, nullptr, 0);
        const std::string left = support::readFile(kPath);
        EXPECT_EQ(kHead, left.substr(0, kHead.size()));
        EXPECT_TRUE(forms[0].compare(0, left.size(), left) == 0 ||
                    forms[1].compare(0, left.size(), left) == 0)
            << left;
    }
}

TEST(FileConfigFaults, ARefusedCutPrintsTheErrorAndChangesNothing) {
    const std::string bytes = kHead + "Key=1\n" + kTail;
    const int memory = memfd_create("fault", MFD_ALLOW_SEALING);
    ASSERT_EQ(static_cast<ssize_t>(bytes.size()), write(memory, bytes.data(), bytes.size()));
    ASSERT_EQ(0, fcntl(memory, F_ADD_SEALS, F_SEAL_SHRINK));
    const std::string path = "/proc/self/fd/" + std::to_string(memory);
    CFileConfig file;
    ASSERT_TRUE(file.open(path, "r+b"));
    const std::string printed = support::printedBy([&] {
        EXPECT_FALSE(file.write("Sec", "Key", 22));
        EXPECT_FALSE(file.removeKey("Sec", "Key"));
    });
    EXPECT_EQ("truncate fail : 1 \ntruncate fail : 1 \n", printed);
    EXPECT_EQ(bytes, support::readFile(path));
    EXPECT_TRUE(file.write("Sec", "Key", 2)) << "in place";
}

TEST(FileConfigFaults, AWriteCutShortFailsAndTheNextOneMendsTheFile) {
    signal(SIGXFSZ, SIG_IGN);
    const std::string bytes = kHead + "Key=1\n";
    support::writeFile(kPath, bytes);
    CFileConfig file;
    ASSERT_TRUE(file.open(kPath, "r+b"));
    rlimit limit{};
    getrlimit(RLIMIT_FSIZE, &limit);
    const rlimit tight{bytes.size() + 2, limit.rlim_max};
    setrlimit(RLIMIT_FSIZE, &tight);
    const bool written = file.write("Sec", "Key", 123456);
    setrlimit(RLIMIT_FSIZE, &limit);
    EXPECT_FALSE(written);
    EXPECT_EQ(kHead + "Key=1234", support::readFile(kPath));
    EXPECT_TRUE(file.write("Sec", "Key", 123456));
    EXPECT_EQ(kHead + "Key=123456\n", support::readFile(kPath));
}

TEST(FileConfigFaults, AFileReplacedWhileOpenIsLeftAlone) {
    support::writeFile(kPath, kHead);
    CFileConfig file;
    ASSERT_TRUE(file.open(kPath, "r+b"));
    std::remove(kPath.c_str());
    EXPECT_TRUE(file.write("Sec", "A", 2)) << "into the file that was opened";
    support::writeFile(kPath, kHead);
    EXPECT_TRUE(file.write("Sec", "A", 33));
    EXPECT_TRUE(file.close());
    EXPECT_EQ(kHead, support::readFile(kPath));
}

}  // namespace
