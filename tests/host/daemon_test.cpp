#include <algorithm>
#include <filesystem>
#include <map>

#include "host/app_config_manager.h"
#include "support/child_process.h"
#include "support/files.h"
#include "support/peer.h"

namespace {

using namespace support;
using std::chrono::milliseconds;
using std::chrono::steady_clock;

const std::string PATH = configPath("devtype_info.cfg");
const std::string FILE_HEAD = "[PROCESSED_DEV_INFORMATION]\nDEV_INFORMATION=";
const std::string DEVICE = "100_VOLTS_DEV_2CH";
const std::string BANNER = "App Config Manager\nProcess COnfigHandler : CConfigDevTypeHandler \n";
const std::string OPENING =
    "WRITING TO CONFIG FILE DEV TYPE :" + DEVICE + " \n!!!!!!!!!!!!! OPEN CHECK !!!!!!!!!!!!!! \n";
const std::string WRITING =
    "!!!!!!!!!!!!! OPEN CHECK DONE!!!!!!!!!!!!!! \n!!!!!!!!!!!!! WRTING !!!!!!!!!!!!!! \n"
    "!!!!!!!!!!!!! WRTING bResult : ";
const std::string IDENTITY = "Dev Type 2 Chn Count : 2 \n";
const std::string RECORDING = OPENING + WRITING + "1 !!!!!!!!!!!!!! \n" +
                              "WRITING TO CONFIG FILE DEV TYPE :" + DEVICE + " SAVED\n" + IDENTITY;
const std::string NOT_RECORDING = OPENING + "failed to open dev type file config \n" + WRITING +
                                  "0 !!!!!!!!!!!!!! \nFAILED TO WRITE DEV TYPE INFO \n" + IDENTITY;
const std::string NO_KEY =
    "[CFileConfig::read str] FAILED to read [PROCESSED_DEV_INFORMATION]:[DEV_INFORMATION]\n"
    "bReul : 0 \n";
constexpr milliseconds LOOKING(1), RESIDENT(1000);

// One line at a time: each must come without the next one pushing it out.
void expectLines(CChildProcess& daemon, const std::string& text) {
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);)
        ASSERT_EQ(line, daemon.readLine().value_or("nothing"));
}

void publish(const std::string& text = DEVICE) {
    EXPECT_EQ(0,
              CPeer([&](CPeerMemory& memory) { return memory.setStringVector(48, {text}); }).run());
}

bool isIdentityRecorded() {
    return readFile(PATH) == FILE_HEAD + DEVICE + '\n';
}

// How often a process has gone to sleep: steady on a busy machine, where processor time is not.
long sleepsOf(pid_t pid) {
    const std::string name = "\nvoluntary_ctxt_switches:";
    const std::string status = readFile("/proc/" + std::to_string(pid) + "/status");
    return std::stol(status.substr(status.find(name) + name.size()));
}

// Waits for more than a cycle of the daemon, which must neither say more nor end, and sleeps for a
// `period` at a time.
void expectQuietLife(CChildProcess& daemon, milliseconds period) {
    const auto begin = steady_clock::now();
    const long before = sleepsOf(daemon.pid());
    EXPECT_EQ(std::nullopt, daemon.readLine(milliseconds(1500)));
    EXPECT_EQ(std::nullopt, daemon.wait(milliseconds(1)));
    const long sleeps = sleepsOf(daemon.pid()) - before;
    EXPECT_GT(sleeps, milliseconds(50) / period);
    EXPECT_LE(sleeps, (steady_clock::now() - begin) / period + 2);
}

void awaitSleeps(const CChildProcess& daemon, long count) {
    const long before = sleepsOf(daemon.pid());
    EXPECT_TRUE(waitUntil([&] { return sleepsOf(daemon.pid()) > before + count; }));
}

// Until the daemon has published what its file says, which would cover a peer's identity, and has
// looked for another one: only what comes after that look is recorded.
void awaitPolling(CChildProcess& daemon) {
    expectLines(daemon, BANNER);
    CPeerMemory memory;
    EXPECT_TRUE(waitUntil([&] { return memory.getStringVector(48) == Texts{"UNKNOWN"}; }));
    awaitSleeps(daemon, 10);
}

TEST(Daemon, RecordsAnIdentityThatComesLateForTheNextStartWhichWritesNothing) {
    const struct {
        std::string file;
        std::string published;  // before the start
        std::string printed;
        std::string recording;  // once the identity comes; empty where it is known already
    } rows[] = {
        {FILE_HEAD + "UNKNOWN\n", "", "", RECORDING},
        // A board as delivered: what a quicker peer has published must not be covered by what no
        // file says.
        {readFile(TEST_DEPLOY_DIR + PATH), DEVICE, NO_KEY + IDENTITY, ""},
        {FILE_HEAD + "BENCH_7\n", "", "Dev Type 1 Chn Count : 2 \n", ""},
        // The peer was quicker, but not done: the text is still to change.
        {FILE_HEAD + '\n', "100_VOLTS", NO_KEY, RECORDING},
        {"", "", "failed to open dev type\n", NOT_RECORDING},  // not even the folder exists
    };
    for (const auto& [file, published, printed, recording] : rows) {
        SCOPED_TRACE(file + published);
        unlink(SEGMENT_FILE);
        if (file.empty()) {
            std::filesystem::remove_all(configPath(""));
        } else {
            writeFile(PATH, file);
        }
        if (!published.empty()) publish(published);
        CChildProcess daemon({APP_CONFIG_MANAGER});
        expectLines(daemon, BANNER + printed);
        if (recording.empty()) {
            EXPECT_EQ(file, readFile(PATH));
            continue;
        }
        published.empty() ? expectQuietLife(daemon, LOOKING) : awaitSleeps(daemon, 2);
        publish();
        expectLines(daemon, recording);
        daemon.kill(SIGKILL);
        daemon.wait();
        if (!file.empty()) {
            EXPECT_TRUE(isIdentityRecorded());
            unlink(SEGMENT_FILE);
        }
        std::error_code none;
        const auto written = std::filesystem::last_write_time(PATH, none);
        CChildProcess next({APP_CONFIG_MANAGER});
        expectLines(next, BANNER + (file.empty() ? printed : "") + IDENTITY);
        if (published.empty()) expectQuietLife(next, RESIDENT);
        EXPECT_EQ(written, std::filesystem::last_write_time(PATH, none));
    }
}

TEST(Daemon, NeedsNoTerminalNoReaderOfItsLinesAndNoOpenDescriptor) {
    writeFile(PATH, FILE_HEAD + "UNKNOWN\n");
    signal(SIGINT, SIG_IGN);  // as a shell does for a background program
    CChildProcess daemon({APP_CONFIG_MANAGER}, {0, 2});
    awaitPolling(daemon);
    for (const int ignored : {SIGHUP, SIGINT})
        daemon.kill(ignored);
    daemon.closeOutput();
    publish();
    EXPECT_TRUE(waitUntil(isIdentityRecorded));
    EXPECT_EQ(std::nullopt, daemon.wait(milliseconds(100)));
    const std::string descriptors = "/proc/" + std::to_string(daemon.pid()) + "/fd/";
    for (const char* closed : {"0", "2"})
        EXPECT_EQ("/dev/null", std::filesystem::read_symlink(descriptors + closed));
}

// A debugger may stop a peer anywhere, and the daemon waits for the lock that it holds.
TEST(Daemon, EndsByTheSignalThatAsksForItAlsoWhileAStoppedPeerHoldsTheLock) {
    writeFile(PATH, FILE_HEAD + "UNKNOWN\n");
    steady_clock::duration fastest = steady_clock::duration::max();
    for (const int signal : {SIGTERM, SIGINT, SIGTERM}) {
        CPeer holder(raiseUnderLock(SIGSTOP));
        CChildProcess daemon({APP_CONFIG_MANAGER});
        awaitPolling(daemon);
        holder.start();
        waitid(P_PID, static_cast<id_t>(holder.pid()), nullptr, WSTOPPED | WNOWAIT);
        std::this_thread::sleep_for(milliseconds(10));
        const auto begin = steady_clock::now();
        daemon.kill(signal);
        EXPECT_EQ(-signal, daemon.wait());
        fastest = std::min(fastest, steady_clock::now() - begin);
        kill(holder.pid(), SIGCONT);
        EXPECT_EQ(0, holder.wait());
    }
    EXPECT_LT(fastest, milliseconds(150)) << "waited for the lock";
}

std::map<std::string, std::string> configFiles() {
    std::map<std::string, std::string> files;
    for (const auto& entry : std::filesystem::directory_iterator(configPath("")))
        files[entry.path().filename()] = readFile(entry.path());
    return files;
}

TEST(DaemonWithAllHandlers, StartsThemOnceTheIdentityIsKnownAndKeepsTheFilesOfTheFactory) {
    std::filesystem::copy(TEST_DEPLOY_DIR + configPath(""), configPath(""));
    writeFile(PATH, FILE_HEAD + "UNKNOWN\n");
    auto expected = configFiles();
    CChildProcess daemon({APP_CONFIG_MANAGER_ALL});
    awaitPolling(daemon);
    EXPECT_EQ(expected, configFiles());
    publish();
    expectLines(daemon, RECORDING);
    // Threads print at once: only the registry's own lines have an order.
    const std::string last = "ProcessEx COnfigHandler : ConfigSystemHandler ";
    std::string started, line;
    while (line != last) {
        line = daemon.readLine().value_or(last);
        if (line.rfind("Process COnfigHandler", 0) == 0) started += line.substr(24);
    }
    EXPECT_EQ("ConfigAutoSaveHandler ConfigDevVarSystemHandler ConfigPresetSaveHandler ", started);
    CPeerMemory memory;
    // The last value of each file that is loaded.
    EXPECT_TRUE(waitUntil([&] {
        return !memory.getDoubleVector(40).empty() && !memory.getDoubleVector(28).empty() &&
               !memory.getStringVector(25).empty();
    }));
    EXPECT_EQ(Doubles(), memory.getDoubleVector(29)) << "the system handler never starts";
    EXPECT_TRUE(memory.setDoubleVector(0, {12, 34}) && memory.setDoubleVector(36, Doubles(16, 3)));
    EXPECT_TRUE(waitUntil([&] {
        const auto files = configFiles();
        return files.at("conf_auto_save.cfg").find("12.000000,34") != std::string::npos &&
               files.at("conf_preset.cfg").find("CurrentSet=3.000000,3") != std::string::npos;
    }));
    daemon.kill(SIGKILL);
    daemon.wait();
    auto files = configFiles();
    for (const char* name : {"conf_auto_save.cfg", "conf_preset.cfg", "devtype_info.cfg"})
        expected[name] = files[name];
    EXPECT_EQ(expected, files);
}

struct CHandler : CAbsConfigHandler {
    CHandler(bool inits, bool starts) : mInits(inits), mStarts(starts) {}
    void run() override {}
    void requestStop() override {}
    bool init() override { return mInits; }
    bool start() override { return mStarts; }
    const bool mInits, mStarts;
};

struct CRegistry : CAppConfigManager {
    using CAppConfigManager::initHandlers;
    using CAppConfigManager::mMapHandlers;
};

TEST(AppConfigManager, StopsAtTheFirstHandlerThatFails) {
    CHandler good(true, true), initFails(false, true), startFails(true, false);
    CRegistry registry;
    const auto printed = [&](const std::map<std::string, CAbsConfigHandler*>& handlers) {
        registry.mMapHandlers = handlers;
        return printedBy([&] {
            std::printf("%d\n", registry.initHandlers());
            std::printf("%d\n", registry.start());
        });
    };
    EXPECT_EQ("0\n0\n", printed({{"none", nullptr}}));
    EXPECT_EQ("1\nProcessEx COnfigHandler : ConfigSystemHandler \n0\n",
              printed({{"ConfigSystemHandler", &good}}));
    EXPECT_EQ("1\nProcess COnfigHandler : A \nFAILED to START :A\n0\n",
              printed({{"A", &startFails}, {"Z", &good}}));
    EXPECT_EQ("FAILED to START :A\n0\nProcess COnfigHandler : A \nProcess COnfigHandler : Z \n1\n",
              printed({{"A", &initFails}, {"Z", &good}}));
    EXPECT_TRUE(registry.init());
    EXPECT_EQ(1U, registry.mMapHandlers.size()) << "none of the former ones";
}

}  // namespace
