#include <sys/mman.h>

#include <atomic>
#include <filesystem>

#include "config/manager/hxl_config_handler.h"
#include "host/app_config_manager.h"
#include "support/child_process.h"
#include "support/files.h"
#include "support/peer.h"
#include "support/wait_until.h"

namespace {

using namespace support;
using std::chrono::milliseconds;
using std::chrono::steady_clock;

const std::string PATH = configPath("devtype_info.cfg");
const std::string FILE_HEAD = "[PROCESSED_DEV_INFORMATION]\nDEV_INFORMATION=";
const std::string BANNER = "App Config Manager\nProcess COnfigHandler : CConfigDevTypeHandler \n";
const std::string OPENING =
    "WRITING TO CONFIG FILE DEV TYPE :100_VOLTS_DEV_2CH \n"
    "!!!!!!!!!!!!! OPEN CHECK !!!!!!!!!!!!!! \n";
const std::string WRITING =
    "!!!!!!!!!!!!! OPEN CHECK DONE!!!!!!!!!!!!!! \n!!!!!!!!!!!!! WRTING !!!!!!!!!!!!!! \n"
    "!!!!!!!!!!!!! WRTING bResult : ";
const std::string IDENTITY = "Dev Type 2 Chn Count : 2 \n";
const std::string NO_KEY =
    "[CFileConfig::read str] FAILED to read [PROCESSED_DEV_INFORMATION]:[DEV_INFORMATION]\n"
    "bReul : 0 \n";
const std::string NO_FILE = "failed to open dev type\n";

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

bool setIdentity(CPeerMemory& memory) {
    return memory.setStringVector(48, {}) && memory.setStringVector(48, {"100_VOLTS_DEV_2CH"});
}

void publishIdentity() {
    EXPECT_EQ(0, CPeer(setIdentity).run());
}

bool isIdentityRecorded() {
    return readFile(PATH) == FILE_HEAD + "100_VOLTS_DEV_2CH\n";
}

// How often a process has gone to sleep: steady on a busy machine, where processor time is not.
long sleepsOf(pid_t pid) {
    const std::string name = "\nvoluntary_ctxt_switches:";
    const std::string status = readFile("/proc/" + std::to_string(pid) + "/status");
    return std::stol(status.substr(status.find(name) + name.size()));
}

TEST(Daemon, IdentityThatComesLaterIsRecordedForTheNextStartWhichWritesNothing) {
    writeFile(PATH, FILE_HEAD + "UNKNOWN\n");
    CChildProcess daemon({APP_CONFIG_MANAGER});
    expectLines(daemon, BANNER);
    expectQuietLife(daemon);
    publishIdentity();
    const std::string saved = "WRITING TO CONFIG FILE DEV TYPE :100_VOLTS_DEV_2CH SAVED\n";
    expectLines(daemon, OPENING + WRITING + "1 !!!!!!!!!!!!!! \n" + saved + IDENTITY);
    expectQuietLife(daemon);
    EXPECT_EQ(FILE_HEAD + "100_VOLTS_DEV_2CH\n", readFile(PATH));
    daemon.kill(SIGKILL);
    daemon.wait();
    const auto written = std::filesystem::last_write_time(PATH);
    CChildProcess next({APP_CONFIG_MANAGER});
    expectLines(next, BANNER + IDENTITY);
    expectQuietLife(next);
    EXPECT_EQ(written, std::filesystem::last_write_time(PATH));
}

// A board as delivered: what a quicker peer has published must not be covered by what no file says.
TEST(Daemon, FirstStartTakesTheIdentityThatAPeerPublishedBeforeIt) {
    const std::string shipped = readFile(TEST_DEPLOY_DIR + PATH);
    writeFile(PATH, shipped);
    publishIdentity();
    CChildProcess daemon({APP_CONFIG_MANAGER});
    expectLines(daemon, BANNER + NO_KEY + IDENTITY);
    expectQuietLife(daemon);
    EXPECT_EQ(shipped, readFile(PATH)) << "known at once is not written";
}

TEST(Daemon, WithoutItsFileItWaitsForTheIdentityAllTheSame) {
    ASSERT_EQ(0, rmdir(configPath("").c_str()));
    CChildProcess daemon({APP_CONFIG_MANAGER});
    expectLines(daemon, BANNER + NO_FILE);
    expectQuietLife(daemon);
    publishIdentity();
    expectLines(daemon, OPENING + "failed to open dev type file config \n" + WRITING +
                            "0 !!!!!!!!!!!!!! \nFAILED TO WRITE DEV TYPE INFO \n" + IDENTITY);
    // Objects of a previous run are the identity of the next one.
    CChildProcess next({APP_CONFIG_MANAGER});
    expectLines(next, BANNER + NO_FILE + IDENTITY);
}

TEST(Daemon, SleepsAMillisecondBetweenLooksAndASecondAfterThem) {
    const struct {
        std::string recorded, printed;
        milliseconds period;
        long least;
    } rows[] = {{"100_VOLTS_DEV_2CH\n", IDENTITY, milliseconds(1000), 1},
                {"UNKNOWN\n", "", milliseconds(1), 50}};
    for (const auto& row : rows) {
        writeFile(PATH, FILE_HEAD + row.recorded);
        CChildProcess daemon({APP_CONFIG_MANAGER});
        expectLines(daemon, BANNER + row.printed);
        const auto begin = steady_clock::now();
        const long before = sleepsOf(daemon.pid());
        expectQuietLife(daemon);
        const long sleeps = sleepsOf(daemon.pid()) - before;
        EXPECT_GE(sleeps, row.least);
        EXPECT_LE(sleeps, (steady_clock::now() - begin) / row.period + 2);
    }
}

TEST(Daemon, DescriptorsThatAreClosedAtItsStartAreTheNullDevice) {
    CPeerMemory memory;
    for (const std::vector<int>& closed : {std::vector<int>{1}, {0, 1, 2}}) {
        writeFile(PATH, FILE_HEAD + "UNKNOWN\n");
        CChildProcess daemon({APP_CONFIG_MANAGER}, closed);
        EXPECT_TRUE(waitUntil([&] { return memory.getStringVector(48) == Texts{"UNKNOWN"}; }));
        publishIdentity();
        EXPECT_TRUE(waitUntil(isIdentityRecorded)) << readFile(PATH);
        const std::string descriptors = "/proc/" + std::to_string(daemon.pid()) + "/fd/";
        for (const int descriptor : closed)
            EXPECT_EQ("/dev/null",
                      std::filesystem::read_symlink(descriptors + std::to_string(descriptor)));
    }
}

TEST(Daemon, OutlivesItsTerminalAndTheReaderOfItsLinesButNotARequestToEnd) {
    writeFile(PATH, FILE_HEAD + "UNKNOWN\n");
    CChildProcess daemon({APP_CONFIG_MANAGER});
    expectLines(daemon, BANNER);
    daemon.kill(SIGHUP);
    daemon.closeOutput();
    publishIdentity();
    EXPECT_TRUE(waitUntil(isIdentityRecorded));
    EXPECT_EQ(std::nullopt, daemon.wait(milliseconds(100)));
    daemon.kill(SIGTERM);
    EXPECT_EQ(-SIGTERM, daemon.wait());
}

// Both attach at the same moment, to no segment, and use the same text from then on.
TEST(Daemon, StartsBesideAPeerThatSetsTheIdentityAtThatMoment) {
    writeFile(PATH, FILE_HEAD + "UNKNOWN\n");
    void* page = mmap(nullptr, 1, PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    ASSERT_NE(MAP_FAILED, page);
    auto& started = *new (page) std::atomic<bool>;
    const auto end = steady_clock::now() + std::chrono::seconds(10);
    for (int round = 0; round < 300 && steady_clock::now() < end; ++round) {
        unlink("/dev/shm/CONF_AUTO_SAVE_MEM");
        started = false;
        CPeer peer([&](CPeerMemory& memory) {
            while (!started)
                if (!setIdentity(memory)) return false;
            return true;
        });
        CPeer daemon([](CPeerMemory&) {
            CAppConfigManager registry;
            return registry.init() && registry.start() &&
                   hxl_config_handler::CSingletonHxlConfigHandler::getInstance()
                           ->getDevTypeInfo() == std::pair(2, 2);
        });
        peer.start();
        const int daemonStatus = daemon.run();
        started = true;
        ASSERT_EQ(0, daemonStatus) << "round " << round;
        ASSERT_EQ(0, peer.wait()) << "round " << round;
    }
}

}  // namespace
