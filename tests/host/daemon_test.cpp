#include <sys/stat.h>

#include "shared_memory/peer.h"
#include "support/child_process.h"
#include "support/files.h"

namespace {

using namespace support;
using std::chrono::milliseconds;

const std::string kPath = configPath("devtype_info.cfg");
const std::string kFile = "[PROCESSED_DEV_INFORMATION]\nDEV_INFORMATION=";
const Texts kBanner = {"App Config Manager", "Process COnfigHandler : CConfigDevTypeHandler "};
const Texts kOpening = {"WRITING TO CONFIG FILE DEV TYPE :100_VOLTS_DEV_2CH ",
                        "!!!!!!!!!!!!! OPEN CHECK !!!!!!!!!!!!!! "};
const Texts kWriting = {"!!!!!!!!!!!!! OPEN CHECK DONE!!!!!!!!!!!!!! ",
                        "!!!!!!!!!!!!! WRTING !!!!!!!!!!!!!! "};
const Texts kSaved = {"!!!!!!!!!!!!! WRTING bResult : 1 !!!!!!!!!!!!!! ",
                      "WRITING TO CONFIG FILE DEV TYPE :100_VOLTS_DEV_2CH SAVED"};
const Texts kNotSaved = {"!!!!!!!!!!!!! WRTING bResult : 0 !!!!!!!!!!!!!! ",
                         "FAILED TO WRITE DEV TYPE INFO "};
const Texts kIdentity = {"Dev Type 2 Chn Count : 2 "};

void expectLines(CChildProcess& daemon, const std::vector<Texts>& blocks) {
    for (const Texts& lines : blocks) {
        for (const std::string& line : lines)
            EXPECT_EQ(line, daemon.readLine().value_or("nothing"));
    }
}

// Waits for more than a cycle of the daemon, which must neither say more nor end.
void expectQuietLife(CChildProcess& daemon) {
    EXPECT_EQ(std::nullopt, daemon.readLine(milliseconds(1500)));
    EXPECT_EQ(std::nullopt, daemon.wait(milliseconds(1)));
}

bool publishIdentity(CPeerMemory& memory) {
    return memory.setStringVector(48, {"100_VOLTS_DEV_2CH"});
}

TEST(Daemon, KnownIdentityIsPrintedAndNothingWritten) {
    writeFile(kPath, kFile + "100_VOLTS_DEV_2CH\n");
    ASSERT_EQ(0, chmod(kPath.c_str(), 0444));
    struct stat64 before {
    }, after{};
    stat64(kPath.c_str(), &before);
    for (int run = 0; run < 2; ++run) {
        CChildProcess daemon({APP_CONFIG_MANAGER});
        expectLines(daemon, {kBanner, kIdentity});
        expectQuietLife(daemon);
    }
    stat64(kPath.c_str(), &after);
    EXPECT_EQ(before.st_mtim.tv_nsec, after.st_mtim.tv_nsec);
}

TEST(Daemon, IdentityThatComesLaterIsRecordedForTheNextStart) {
    writeFile(kPath, kFile + "UNKNOWN\n");
    CChildProcess daemon({APP_CONFIG_MANAGER});
    expectLines(daemon, {kBanner});
    expectQuietLife(daemon);
    EXPECT_EQ(0, CPeer(publishIdentity).run());
    expectLines(daemon, {kOpening, kWriting, kSaved, kIdentity});
    expectQuietLife(daemon);
    EXPECT_EQ(kFile + "100_VOLTS_DEV_2CH\n", readFile(kPath));
    daemon.kill(SIGKILL);
    daemon.wait();
    CChildProcess next({APP_CONFIG_MANAGER});
    expectLines(next, {kBanner, kIdentity});
}

TEST(Daemon, WithoutItsFileItWaitsForTheIdentityAllTheSame) {
    ASSERT_EQ(0, rmdir(configPath("").c_str()));
    CChildProcess daemon({APP_CONFIG_MANAGER});
    expectLines(daemon, {kBanner, {"failed to open dev type"}});
    EXPECT_EQ(0, CPeer(publishIdentity).run());
    expectLines(
        daemon,
        {kOpening, {"failed to open dev type file config "}, kWriting, kNotSaved, kIdentity});
    expectQuietLife(daemon);
    // Objects of a previous run are the identity of the next one.
    CChildProcess next({APP_CONFIG_MANAGER});
    expectLines(next, {kBanner, {"failed to open dev type"}, kIdentity});
}

}  // namespace
