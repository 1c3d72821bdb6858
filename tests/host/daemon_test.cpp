#include <filesystem>

#include "support/child_process.h"
#include "support/files.h"
#include "support/peer.h"

namespace {

using namespace support;
using std::chrono::milliseconds;

const std::string kPath = configPath("devtype_info.cfg");
const std::string kFile = "[PROCESSED_DEV_INFORMATION]\nDEV_INFORMATION=";
const std::string kBanner = "App Config Manager\nProcess COnfigHandler : CConfigDevTypeHandler \n";
const std::string kOpening =
    "WRITING TO CONFIG FILE DEV TYPE :100_VOLTS_DEV_2CH \n"
    "!!!!!!!!!!!!! OPEN CHECK !!!!!!!!!!!!!! \n";
const std::string kWriting =
    "!!!!!!!!!!!!! OPEN CHECK DONE!!!!!!!!!!!!!! \n!!!!!!!!!!!!! WRTING !!!!!!!!!!!!!! \n"
    "!!!!!!!!!!!!! WRTING bResult : ";
const std::string kIdentity = "Dev Type 2 Chn Count : 2 \n";
const std::string kNoFile = "failed to open dev type\n";

// One line at a time: each must come without the next one pushing it out.
void expectLines(CChildProcess& daemon, const std::string& text) {
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);)
        ASSERT_EQ(line, daemon.readLine().value_or("nothing"));
}

// Waits for more than a cycle of the daemon, which must neither say more nor end.
void expectQuietLife(CChildProcess& daemon) {
    EXPECT_EQ(std::nullopt, daemon.readLine(milliseconds(1500)));
    EXPECT_EQ(std::nullopt, daemon.wait(milliseconds(1)));
}

// Empties the vector first: the daemon keeps what it makes of an old text half replaced.
void publishIdentity() {
    CPeer peer([](CPeerMemory& memory) {
        return memory.setStringVector(48, {}) && memory.setStringVector(48, {"100_VOLTS_DEV_2CH"});
    });
    EXPECT_EQ(0, peer.run());
}

TEST(Daemon, KnownIdentityIsPrintedAndNothingWritten) {
    writeFile(kPath, kFile + "100_VOLTS_DEV_2CH\n");
    const auto written = std::filesystem::last_write_time(kPath);
    for (int run = 0; run < 2; ++run) {
        CChildProcess daemon({APP_CONFIG_MANAGER});
        expectLines(daemon, kBanner + kIdentity);
        expectQuietLife(daemon);
    }
    EXPECT_EQ(written, std::filesystem::last_write_time(kPath));
}

TEST(Daemon, IdentityThatComesLaterIsRecordedForTheNextStart) {
    writeFile(kPath, kFile + "UNKNOWN\n");
    CChildProcess daemon({APP_CONFIG_MANAGER});
    expectLines(daemon, kBanner);
    expectQuietLife(daemon);
    publishIdentity();
    const std::string saved = "WRITING TO CONFIG FILE DEV TYPE :100_VOLTS_DEV_2CH SAVED\n";
    expectLines(daemon, kOpening + kWriting + "1 !!!!!!!!!!!!!! \n" + saved + kIdentity);
    expectQuietLife(daemon);
    EXPECT_EQ(kFile + "100_VOLTS_DEV_2CH\n", readFile(kPath));
    daemon.kill(SIGKILL);
    daemon.wait();
    CChildProcess next({APP_CONFIG_MANAGER});
    expectLines(next, kBanner + kIdentity);
}

TEST(Daemon, WithoutItsFileItWaitsForTheIdentityAllTheSame) {
    ASSERT_EQ(0, rmdir(configPath("").c_str()));
    CChildProcess daemon({APP_CONFIG_MANAGER});
    expectLines(daemon, kBanner + kNoFile);
    expectQuietLife(daemon);
    publishIdentity();
    expectLines(daemon, kOpening + "failed to open dev type file config \n" + kWriting +
                            "0 !!!!!!!!!!!!!! \nFAILED TO WRITE DEV TYPE INFO \n" + kIdentity);
    // Objects of a previous run are the identity of the next one.
    CChildProcess next({APP_CONFIG_MANAGER});
    expectLines(next, kBanner + kNoFile + kIdentity);
}

}  // namespace
