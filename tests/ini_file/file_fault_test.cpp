// Faults by number: the N-th call that a change makes fails, or the process ends there, for N = 1,
// 2, 3 ... until none fires. The program is linked with -Wl,--wrap for the calls.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <functional>
#include <new>
#include <string>
#include <thread>

#include "config/manager/hxl_config_handler.h"
#include "framework/exit_gate.h"
#include "ini_file/file_config.h"
#include "support/files.h"

#ifdef __GLIBC__
#define WIDE(name) name##64  // its name of a call with 64-bit offsets
#else
#define WIDE(name) name
#endif

namespace {

using core_utils::CFileConfig;

// Without space half is written first; to be asked to end leaves time for what is under way.
enum class eFault { ERROR, NO_SPACE, NO_MEMORY, KILL, END };

// What a change did in a child process, in memory that both share.
struct sRun {
    eFault fault;
    int strikeAt;
    int count;
    bool watching;
    bool struck;
    bool finished;
    bool result;
};
sRun* const gpRun = static_cast<sRun*>(
    mmap(nullptr, sizeof(sRun), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0));

// As a signal that asks the process to end does.
void endMeanwhile() {
    std::thread([] {
        core_utils::CExitGate::close(std::chrono::seconds(10));
        _exit(0);
    }).detach();
    std::this_thread::sleep_for(std::chrono::milliseconds(2));
}

bool strikes(eFault only = eFault::ERROR) {
    if (gpRun == nullptr || !gpRun->watching) return false;
    if ((gpRun->fault == eFault::NO_MEMORY) != (only == eFault::NO_MEMORY)) return false;
    if (++gpRun->count != gpRun->strikeAt) return false;
    gpRun->struck = true;
    if (gpRun->fault == eFault::KILL) raise(SIGKILL);
    if (gpRun->fault == eFault::END) {
        endMeanwhile();
        return false;
    }
    errno = gpRun->fault == eFault::NO_SPACE ? ENOSPC : EIO;
    return true;
}

}  // namespace

// One call of the system that fails when it is its turn.
#define FAILING(name, parameters, arguments)             \
    extern "C" int __real_##name parameters;             \
    extern "C" int __wrap_##name parameters {            \
        return strikes() ? -1 : __real_##name arguments; \
    }
FAILING(fsync, (int descriptor), (descriptor))
FAILING(rename, (const char* from, const char* to), (from, to))
FAILING(fchown, (int descriptor, uid_t owner, gid_t group), (descriptor, owner, group))
FAILING(fchmod, (int descriptor, mode_t mode), (descriptor, mode))

extern "C" {
ssize_t WIDE(__real_pread)(int, void*, std::size_t, off_t);
ssize_t WIDE(__real_pwrite)(int, const void*, std::size_t, off_t);
int WIDE(__real_ftruncate)(int, off_t);
int WIDE(__real_open)(const char*, int, ...);

ssize_t WIDE(__wrap_pread)(int descriptor, void* to, std::size_t size, off_t offset) {
    return strikes() ? -1 : WIDE(__real_pread)(descriptor, to, size, offset);
}
ssize_t WIDE(__wrap_pwrite)(int descriptor, const void* from, std::size_t size, off_t offset) {
    if (!strikes()) return WIDE(__real_pwrite)(descriptor, from, size, offset);
    if (gpRun->fault != eFault::NO_SPACE || size == 1) return -1;
    ++gpRun->strikeAt;  // the rest fails
    return WIDE(__real_pwrite)(descriptor, from, size / 2, offset);
}
int WIDE(__wrap_ftruncate)(int descriptor, off_t size) {
    return strikes() ? -1 : WIDE(__real_ftruncate)(descriptor, size);
}
int WIDE(__wrap_open)(const char* path, int flags, mode_t mode) {
    return strikes() ? -1 : WIDE(__real_open)(path, flags, mode);
}
}

void* operator new(std::size_t size) {
    void* block = strikes(eFault::NO_MEMORY) ? nullptr : std::malloc(size);
    if (block == nullptr) throw std::bad_alloc();
    return block;
}
// Not inline: the compiler would see free() take what another operator new has given.
[[gnu::noinline]] void operator delete(void* block) noexcept {
    std::free(block);
}
[[gnu::noinline]] void operator delete(void* block, std::size_t) noexcept {
    std::free(block);
}

namespace {

struct sCase {
    const char* file;
    std::string before;
    std::function<void()> prepare;
    std::function<bool()> change;
    bool withoutMemory;  // it is to survive that
};

// Runs the change in a process of its own, its output away.
void run(const sCase& row, eFault fault, int strikeAt) {
    *gpRun = {};
    gpRun->fault = fault;
    gpRun->strikeAt = strikeAt;
    std::fflush(stdout);  // or the child writes it too
    const pid_t child = fork();
    if (child == 0) {
        if (std::freopen("/dev/null", "w", stdout) == nullptr) _exit(1);
        row.prepare();
        gpRun->watching = true;
        gpRun->result = row.change();
        gpRun->watching = false;
        while (fault == eFault::END && gpRun->struck)
            pause();
        gpRun->finished = true;
        _exit(0);
    }
    waitpid(child, nullptr, 0);
    gpRun->watching = false;
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
    for (int number = 0; number == 0 || gpRun->struck; ++number) {
        unlink(link.c_str());
        support::writeFile(path, row.before);
        ASSERT_EQ(0, linked ? ::link(path.c_str(), link.c_str()) : 0);
        run(row, fault, number);
        std::string left = support::readFile(path);
        if (number == 0) {
            after = between = left;
            if (row.before == UNMARKED) between.replace(0, row.before.size(), row.before);
            ASSERT_TRUE(gpRun->result && after != row.before);
        }
        SCOPED_TRACE(testing::Message() << "fault " << static_cast<int>(fault) << " at call "
                                        << number << (linked ? " in place" : "") << '\n'
                                        << left);
        const bool killed = gpRun->struck && fault == eFault::KILL;
        EXPECT_EQ(killed || (gpRun->struck && fault == eFault::END), !gpRun->finished);
        EXPECT_TRUE(killed || access((path + ".new").c_str(), F_OK) != 0);
        const auto is = [&](const std::string& text) {
            return killed ? withoutBlankEnd(left) == withoutBlankEnd(text) : left == text;
        };
        const bool isNew = is(after) || is(between);
        EXPECT_TRUE(isNew || (is(row.before) && !gpRun->result));
        newInVain += isNew && gpRun->finished && !gpRun->result;
    }
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
    // In one block, and with the value of Key in two.
    for (const std::size_t pad : {0, 4076}) {
        const std::string before =
            "#" + std::string(pad, 'p') + "\n[Sec]\nA=1\nKey=11111111\nZ=26\n\n[Next]\n#n\nB=2\n";
        bool (*const changes[])(CFileConfig&) = {
            [](CFileConfig& file) { return file.write("Sec", "Key", 22222222); },
            [](CFileConfig& file) { return file.write("Sec", "Key", "333333333333"); },
            [](CFileConfig& file) { return file.write("Sec", "Key", 4); },
            [](CFileConfig& file) { return file.write("Sec", "New", 5); },
            [](CFileConfig& file) { return file.write("Other", "Key", 1); },
            [](CFileConfig& file) { return file.removeKey("Sec", "Key"); },
            [](CFileConfig& file) {
                CFileConfig::CBatch batch(file);
                return file.write("Sec", "Key", 4) && file.write("Other", "Key", 1) &&
                       file.removeKey("Sec", "A") && batch.commit();
            },
        };
        for (const auto change : changes) {
            CFileConfig file;
            expectOldOrNew({"fault.cfg", before,
                            [&] { file.open(support::configPath("fault.cfg"), "r+b"); },
                            [&] { return change(file) && file.close(); }, true});
        }
    }
}

TEST(FileFaults, APresetAndASeedingAreSavedAsAWhole) {
    auto& facade = *hxl_config_handler::CSingletonHxlConfigHandler::getInstance();
    facade.setDevTypeInfo(2, 2, false);
    hxl_config_handler::sPresetBlock block{};
    block.fVoltageSet[0] = 20.5F;
    const auto load = [&] { facade.loadPresetConfig(); };
    const sCase rows[] = {
        {"conf_preset.cfg",
         "[INSTRUMENT_SETTING_1_100_VOLTS_DEV]\nVoltageSet=1.000000,1.000000\nFuseState=0,1\n",
         load, [&] { return facade.savePresetBlock(1, block, true); }, false},
        {"conf_auto_save.cfg", "[CONF_STATUS]\nSTATE=1\n\n[CONF_ITEM_DBL]\nVOL_LVL=1.0\n", load,
         [&] { return facade.saveDblValues(0, {20.5}); }, false},
        {"conf_auto_save.cfg", UNMARKED, load, [&] { return facade.loadAutoSaveConfig(); }, false},
    };
    for (const sCase& row : rows)
        expectOldOrNew(row);
}

}  // namespace
