#include <algorithm>
#include <filesystem>
#include <map>

#include "support/child_process.h"
#include "support/files.h"
#include "support/peer.h"
#include "support/wait_until.h"

namespace {

using namespace support;
using std::chrono::milliseconds;
using std::chrono::steady_clock;

const char* const SEGMENT = "/dev/shm/CONF_AUTO_SAVE_MEM";
const std::string PATH = configPath("devtype_info.cfg");
const std::string FILE_HEAD = "[PROCESSED_DEV_INFORMATION]\nDEV_INFORMATION=";
const std::string BANNER = "App Config Manager\nProcess COnfigHandler : CConfigDevTypeHandler \n";
const std::string OPENING =
    "WRITING TO CONFIG FILE DEV TYPE :100_VOLTS_DEV_2CH \n"
    "!!!!!!!!!!!!! OPEN CHECK !!!!!!!!!!!!!! \n";
const std::string WRITING =
    "!!!!!!!!!!!!! OPEN CHECK DONE!!!!!!!!!!!!!! \n!!!!!!!!!!!!! WRTING !!!!!!!!!!!!!! \n"
    "!!!!!!!!!!!!! WRTING bResult : ";
const std::string RECORDING = OPENING + WRITING + "1 !!!!!!!!!!!!!! \n" +
                              "WRITING TO CONFIG FILE DEV TYPE :100_VOLTS_DEV_2CH SAVED\n";
const std::string IDENTITY = "Dev Type 2 Chn Count : 2 \n";
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

void publish(const std::string& text = "100_VOLTS_DEV_2CH") {
    EXPECT_EQ(0,
              CPeer([&](CPeerMemory& memory) { return memory.setStringVector(48, {text}); }).run());
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
void awaitPolling(const CChildProcess& daemon) {
    CPeerMemory memory;
    EXPECT_TRUE(waitUntil([&] { return memory.getStringVector(48) == Texts{"UNKNOWN"}; }));
    awaitSleeps(daemon, 10);
}

TEST(Daemon, RecordsAnIdentityThatComesLaterForTheNextStartWhichWritesNothing) {
    const struct {
        bool onDisk;  // there is a file, and no segment at the next start
        std::string missing, recording;
    } rows[] = {
        {true, "", RECORDING},
        {false, "failed to open dev type\n",
         OPENING + "failed to open dev type file config \n" + WRITING +
             "0 !!!!!!!!!!!!!! \nFAILED TO WRITE DEV TYPE INFO \n"},
    };
    for (const auto& row : rows) {
        unlink(SEGMENT);
        std::error_code none;
        writeFile(PATH, FILE_HEAD + "UNKNOWN\n");
        if (!row.onDisk) std::filesystem::remove_all(configPath(""));
        CChildProcess daemon({APP_CONFIG_MANAGER});
        expectLines(daemon, BANNER + row.missing);
        expectQuietLife(daemon, LOOKING);
        publish();
        expectLines(daemon, row.recording + IDENTITY);
        expectQuietLife(daemon, RESIDENT);
        daemon.kill(SIGKILL);
        daemon.wait();
        if (row.onDisk) unlink(SEGMENT);
        const auto written = std::filesystem::last_write_time(PATH, none);
        CChildProcess next({APP_CONFIG_MANAGER});
        expectLines(next, BANNER + row.missing + IDENTITY);
        expectQuietLife(next, RESIDENT);
        EXPECT_EQ(written, std::filesystem::last_write_time(PATH, none));
    }
}

// A board as delivered: what a quicker peer has published must not be covered by what no file says.
TEST(Daemon, LeavesTheFileAloneIfTheIdentityIsKnownAtItsStart) {
    const struct {
        std::string file;
        bool published;
        std::string printed;
    } rows[] = {{readFile(TEST_DEPLOY_DIR + PATH), true, NO_KEY + IDENTITY},
                {FILE_HEAD + "BENCH_7\n", false, "Dev Type 1 Chn Count : 2 \n"}};
    for (const auto& row : rows) {
        unlink(SEGMENT);
        writeFile(PATH, row.file);
        if (row.published) publish();
        CChildProcess daemon({APP_CONFIG_MANAGER});
        expectLines(daemon, BANNER + row.printed);
        EXPECT_EQ(row.file, readFile(PATH));
    }
}

// The peer was quicker, but not done: the text that the daemon looks at first is still to change.
TEST(Daemon, RecordsAnIdentityThatWasStillBeingWrittenAtTheFirstLook) {
    for (const char* begun : {"100_VOLTS", "UNKNO", "BENCH_7"}) {
        unlink(SEGMENT);
        writeFile(PATH, FILE_HEAD + '\n');
        publish(begun);
        CChildProcess daemon({APP_CONFIG_MANAGER});
        expectLines(daemon, BANNER + NO_KEY);
        awaitSleeps(daemon, 2);
        publish();
        expectLines(daemon, RECORDING + IDENTITY);
        EXPECT_TRUE(isIdentityRecorded()) << begun;
    }
}

TEST(Daemon, NeedsNoTerminalNoReaderOfItsLinesAndNoOpenDescriptor) {
    writeFile(PATH, FILE_HEAD + "UNKNOWN\n");
    CChildProcess daemon({APP_CONFIG_MANAGER}, {0, 2});
    expectLines(daemon, BANNER);
    awaitPolling(daemon);
    daemon.kill(SIGHUP);
    daemon.closeOutput();
    publish();
    EXPECT_TRUE(waitUntil(isIdentityRecorded));
    EXPECT_EQ(std::nullopt, daemon.wait(milliseconds(100)));
    const std::string descriptors = "/proc/" + std::to_string(daemon.pid()) + "/fd/";
    for (const char* closed : {"0", "2"})
        EXPECT_EQ("/dev/null", std::filesystem::read_symlink(descriptors + closed));
}

// Threads print at once: only the registry's own lines have an order.
void expectOtherHandlers(CChildProcess& daemon) {
    const std::string other = "Process COnfigHandler : Config";
    std::string started, line;
    while (line != "ProcessEx COnfigHandler : ConfigSystemHandler ") {
        line = daemon.readLine().value_or("ProcessEx COnfigHandler : ConfigSystemHandler ");
        if (line.rfind("Process", 0) == 0) started += line + '\n';
    }
    EXPECT_EQ(other + "AutoSaveHandler \n" + other + "DevVarSystemHandler \n" + other +
                  "PresetSaveHandler \nProcessEx COnfigHandler : ConfigSystemHandler \n",
              started);
}

std::map<std::string, std::string> configFiles() {
    std::map<std::string, std::string> files;
    for (const auto& entry : std::filesystem::directory_iterator(configPath("")))
        files[entry.path().filename()] = readFile(entry.path());
    return files;
}

void expectInFile(const std::string& name, const std::string& part) {
    EXPECT_TRUE(waitUntil([&] {
        return readFile(configPath(name)).find(part) != std::string::npos;
    })) << part;
}

TEST(DaemonWithAllHandlers, KeepsItsFilesOverAKillAndLeavesThoseOfTheFactoryAlone) {
    std::filesystem::copy(TEST_DEPLOY_DIR + configPath(""), configPath(""));
    writeFile(PATH, FILE_HEAD + "UNKNOWN\n");
    auto expected = configFiles();
    CChildProcess daemon({APP_CONFIG_MANAGER_ALL});
    expectLines(daemon, BANNER);
    awaitPolling(daemon);
    EXPECT_EQ(expected, configFiles()) << "nothing else before the identity is known";
    publish();
    expectLines(daemon, RECORDING + IDENTITY);
    expectOtherHandlers(daemon);
    CPeerMemory memory;
    // The last preset, the last item and the values of the other files.
    for (const int id : {40, 28})
        EXPECT_TRUE(waitUntil([&] { return !memory.getDoubleVector(id).empty(); })) << id;
    EXPECT_TRUE(waitUntil([&] { return !memory.getStringVector(25).empty(); }));
    EXPECT_EQ(Doubles(), memory.getDoubleVector(29)) << "the system handler never starts";
    Doubles preset = memory.getDoubleVector(36);
    preset.at(0) = 3;
    EXPECT_TRUE(memory.setDoubleVector(0, {12, 34}) && memory.setDoubleVector(36, preset));
    expectInFile("conf_preset.cfg", "\nVoltageSet=3.000000,20.000000\n");
    for (const char* part : {"STATE=1\n", "VOL_LVL=12.000000,34.000000\n", "CUR_LVL=2.030000\n"})
        expectInFile("conf_auto_save.cfg", part);
    daemon.kill(SIGKILL);
    daemon.wait();
    const auto files = configFiles();
    for (const char* name : {"conf_auto_save.cfg", "conf_preset.cfg", "devtype_info.cfg"})
        expected[name] = files.at(name);
    EXPECT_EQ(expected, files) << "the others belong to the factory";

    unlink(SEGMENT);
    CChildProcess next({APP_CONFIG_MANAGER_ALL});
    expectLines(next, BANNER + IDENTITY);
    expectOtherHandlers(next);
    CPeerMemory after;
    EXPECT_TRUE(waitUntil([&] { return after.getDoubleVector(0) == Doubles{12, 34}; }));
    EXPECT_TRUE(waitUntil([&] { return after.getDoubleVector(36) == preset; }));
    EXPECT_EQ(files, configFiles()) << "a start writes nothing";
}

// A debugger may stop a peer anywhere, and the daemon waits for the lock that it holds.
TEST(Daemon, EndsByTheSignalThatAsksForItAlsoWhileAStoppedPeerHoldsTheLock) {
    writeFile(PATH, FILE_HEAD + "UNKNOWN\n");
    steady_clock::duration fastest = steady_clock::duration::max();
    for (const int signal : {SIGTERM, SIGINT, SIGTERM}) {
        CPeer holder([](CPeerMemory& memory) {
            auto stop = [] { raise(SIGSTOP); };
            memory.mpSharedMemory->atomic_func(stop);
            return true;
        });
        CChildProcess daemon({APP_CONFIG_MANAGER});
        expectLines(daemon, BANNER);
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

}  // namespace
