// Faults by number: the N-th call that a change makes fails, or the process ends there, for N = 1,
// 2, 3 ... until none fires. The program is linked with -Wl,--wrap for the calls.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <functional>
#include <string>
#include <thread>

#include "config/manager/hxl_config_handler.h"
#include "framework/exit_gate.h"
#include "ini_file/file_config.h"
#include "support/allocations.h"
#include "support/child_process.h"
#include "support/files.h"

namespace {

using core_utils::CFileConfig;

// Without space half is written first; to be asked to end leaves time for what is under way.
enum class eFault { ERROR, NO_SPACE, NO_MEMORY, KILL, END };

// What became of a process that made a change, in bits: the fault has struck, the result was true,
// a signal ended it.
enum eOutcome { STRUCK = 1, DONE = 2, ENDED = 4 };

eFault gFault;
int gCallsLeft = 0;  // up to the fault

// As a signal that asks the process to end does.
void endMeanwhile() {
    std::thread([] {
        core_utils::CExitGate::close(std::chrono::seconds(10));
        kill(getpid(), SIGKILL);
    }).detach();
    std::this_thread::sleep_for(std::chrono::milliseconds(2));
}

bool strikes() {
    if (gCallsLeft == 0 || --gCallsLeft > 0) return false;
    if (gFault == eFault::KILL) raise(SIGKILL);
    if (gFault == eFault::END) endMeanwhile();
    errno = gFault == eFault::NO_SPACE ? ENOSPC : EIO;
    return gFault != eFault::END;
}

}  // namespace

// Calls of the system that fail when it is their turn.
#define FAILING_CALL(result, name, parameters, arguments) \
    extern "C" result __real_##name parameters;           \
    extern "C" result __wrap_##name parameters {          \
        return strikes() ? -1 : __real_##name arguments;  \
    }
#define FAILING(result, name, ...) FAILING_CALL(result, name, __VA_ARGS__)
#ifdef __GLIBC__
#define WIDE(name) name##64  // its name of a call with 64-bit offsets
#else
#define WIDE(name) name
#endif
FAILING(int, fsync, (int file), (file))
FAILING(int, rename, (const char* from, const char* to), (from, to))
FAILING(int, fchown, (int file, uid_t owner, gid_t group), (file, owner, group))
FAILING(int, fchmod, (int file, mode_t mode), (file, mode))
FAILING(int, WIDE(open), (const char* path, int flags, mode_t mode), (path, flags, mode))
FAILING(int, WIDE(ftruncate), (int file, off_t size), (file, size))
FAILING(ssize_t, WIDE(pread), (int file, void* to, std::size_t size, off_t offset),
        (file, to, size, offset))

extern "C" ssize_t WIDE(__real_pwrite)(int, const void*, std::size_t, off_t);
extern "C" ssize_t WIDE(__wrap_pwrite)(int file, const void* from, std::size_t size, off_t offset) {
    if (!strikes()) return WIDE(__real_pwrite)(file, from, size, offset);
    if (gFault != eFault::NO_SPACE || size == 1) return -1;
    gCallsLeft = 1;  // the rest fails
    return WIDE(__real_pwrite)(file, from, size / 2, offset);
}

namespace {

struct sCase {
    const char* file;
    std::string before;
    std::function<bool()> change;
    bool withoutMemory;  // it is to survive that
};

// Runs the change in a process of its own, its output away; without a fault for number 0.
int outcomeOf(const sCase& row, eFault fault, int number) {
    std::fflush(stdout);  // or the child writes it too
    const pid_t child = fork();
    if (child == 0) {
        const bool withMemory = fault != eFault::NO_MEMORY;
        if (std::freopen("/dev/null", "w", stdout) == nullptr) _exit(0);
        gFault = fault;
        gCallsLeft = withMemory ? number : 0;
        support::countAllocations(withMemory ? 0 : number);
        // Or GoogleTest would catch what it throws.
        const bool done = [&]() noexcept { return row.change(); }();
        const bool isPast = withMemory ? gCallsLeft == 0 : support::allocations() >= number;
        const bool struck = number > 0 && isPast;
        while (fault == eFault::END && struck)
            pause();
        _exit((struck ? STRUCK : 0) | (done ? DONE : 0));
    }
    const int status = support::statusOf(child);
    return status < 0 ? STRUCK | ENDED : status;
}

std::string withoutBlankEnd(std::string text) {
    text.erase(text.find_last_not_of('\n') + 1);
    return text;
}

constexpr char UNMARKED[] = "[CONF_STATUS]\nSTATE=0\n";

// Every call fails, and the process ends at every call: the file is the old or the new one, and the
// result says which. A second hard link keeps the change in place.
void expectOldOrNew(const sCase& row, eFault fault, bool linked) {
    const std::string path = support::configPath(row.file);
    const std::string link = path + ".link";
    std::string after;    // of a run without a fault
    std::string between;  // a seeding that did not come to its mark does for the new file
    int newInVain = 0;
    int outcome = 0;
    int number = 0;
    for (; number <= 1 || (outcome & STRUCK) != 0; ++number) {
        unlink(link.c_str());
        support::writeFile(path, row.before);
        ASSERT_EQ(0, linked ? ::link(path.c_str(), link.c_str()) : 0);
        outcome = outcomeOf(row, fault, number);
        const std::string left = support::readFile(path);
        if (number == 0) {
            after = between = left;
            if (row.before == UNMARKED) between.replace(0, row.before.size(), row.before);
            ASSERT_EQ(DONE, outcome);
            ASSERT_NE(row.before, after);
        }
        SCOPED_TRACE(testing::Message() << "fault " << static_cast<int>(fault) << " at call "
                                        << number << (linked ? " in place" : "") << '\n'
                                        << left);
        const bool killed = fault == eFault::KILL && outcome != DONE;
        const bool ended = killed || (fault == eFault::END && outcome != DONE);
        EXPECT_EQ(ended, (outcome & ENDED) != 0);
        EXPECT_TRUE(killed || access((path + ".new").c_str(), F_OK) != 0);
        const auto is = [&](const std::string& text) {
            return killed ? withoutBlankEnd(left) == withoutBlankEnd(text) : left == text;
        };
        const bool isNew = is(after) || is(between);
        EXPECT_TRUE(isNew || (is(row.before) && (outcome & DONE) == 0));
        newInVain += isNew && outcome == STRUCK;
    }
    EXPECT_TRUE(number > 2 || fault == eFault::NO_MEMORY) << "none has struck";
    EXPECT_LE(newInVain, 2);  // the folder could not be opened, or not stored
}

void expectOldOrNew(const sCase& row) {
    for (const bool linked : {false, true}) {
        for (const eFault fault : {eFault::ERROR, eFault::NO_SPACE, eFault::KILL, eFault::END}) {
            expectOldOrNew(row, fault, linked);
        }
        if (row.withoutMemory) expectOldOrNew(row, eFault::NO_MEMORY, linked);
    }
}

TEST(FileFaults, AChangeLeavesTheOldFileOrTheNewOne) {
    static const std::string PATH = support::configPath("fault.cfg");
    // In one block, and with the value of Key in two.
    for (const std::size_t pad : {std::size_t{0}, std::size_t{4050}}) {
        const std::string before =
            "#" + std::string(pad, 'p') +
            "\n[Sec]\nA=longer-than-a-text-in-place\nKey=11111111\nZ=26\n\n[Next]\n#n\nB=2\n";
        bool (*const changes[])(CFileConfig&) = {
            [](CFileConfig& file) {
                std::string text;
                return file.read("Sec", "A", text) && file.write("Sec", "Key", 22222222);
            },
            [](CFileConfig& file) { return file.write("Sec", "Key", "333333333333"); },
            [](CFileConfig& file) { return file.write("Sec", "Key", 4); },
            [](CFileConfig& file) { return file.write("Sec", "New", 5); },
            [](CFileConfig& file) { return file.write("Other", "Key", 1); },
            [](CFileConfig& file) { return file.removeKey("Sec", "Key"); },
            [](CFileConfig& file) {
                CFileConfig::CBatch batch(file);
                file.write("Sec", "Key", 4);
                file.write("Other", "Key", 1);
                file.removeKey("Sec", "A");
                return batch.commit();  // none, if one of them has failed
            },
        };
        for (const auto change : changes) {
            expectOldOrNew({"fault.cfg", before,
                            [change] {
                                CFileConfig file;
                                return file.open(PATH.c_str(), "r+b") && change(file) &&
                                       file.close();
                            },
                            true});
        }
    }
}

TEST(FileFaults, APresetAndASeedingAreSavedAsAWhole) {
    auto& facade = *hxl_config_handler::CSingletonHxlConfigHandler::getInstance();
    facade.setDevTypeInfo(2, 2, false);
    hxl_config_handler::sPresetBlock block{};
    block.fVoltageSet[0] = 20.5F;
    const sCase rows[] = {
        {"conf_preset.cfg",
         "[INSTRUMENT_SETTING_1_100_VOLTS_DEV]\nVoltageSet=1.000000,1.000000\nFuseState=0,1\n",
         [&] { return facade.loadPresetConfig() && facade.savePresetBlock(1, block, true); },
         false},
        {"conf_auto_save.cfg", UNMARKED, [&] { return facade.loadAutoSaveConfig(); }, false},
    };
    for (const sCase& row : rows)
        expectOldOrNew(row);
}

}  // namespace
