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

struct sFault {
    const char* name;
    int error;    // of the failing call
    bool partly;  // a write does a part of its work first
    bool kill;    // the process ends instead
    bool memory;  // what fails is an allocation
    bool ends;    // the process is asked to end
};
constexpr sFault FAULTS[] = {{"EIO", EIO, false, false, false, false},
                             {"ENOSPC after a part", ENOSPC, true, false, false, false},
                             {"killed", 0, false, true, false, false},
                             {"no memory", ENOMEM, false, false, true, false},
                             {"asked to end", 0, false, false, false, true}};

// What a change did in a child process, in memory that both share.
struct sRun {
    sFault fault;
    int strikeAt;
    int count;
    bool watching;
    bool struck;
    bool finished;
    bool result;
    const char* hit;  // a literal, so the same in both
};
sRun gIdle;
sRun* gpRun = &gIdle;  // shared from the first run on

// As a signal that asks the process to end does.
void endMeanwhile() {
    std::thread([] {
        core_utils::CExitGate::close(std::chrono::seconds(10));
        _exit(0);
    }).detach();
    std::this_thread::sleep_for(std::chrono::milliseconds(2));
}

bool strikes(const char* call, bool memory = false) {
    if (!gpRun->watching || gpRun->fault.memory != memory) return false;
    if (++gpRun->count != gpRun->strikeAt) return false;
    gpRun->struck = true;
    gpRun->hit = call;
    if (gpRun->fault.kill) raise(SIGKILL);
    if (gpRun->fault.ends) {
        endMeanwhile();
        return false;
    }
    errno = gpRun->fault.error;
    return true;
}

}  // namespace

// One call of the system that fails when it is its turn.
#define FAILING(name, parameters, arguments)                  \
    extern "C" int __real_##name parameters;                  \
    extern "C" int __wrap_##name parameters {                 \
        return strikes(#name) ? -1 : __real_##name arguments; \
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
    return strikes("pread") ? -1 : WIDE(__real_pread)(descriptor, to, size, offset);
}
ssize_t WIDE(__wrap_pwrite)(int descriptor, const void* from, std::size_t size, off_t offset) {
    if (!strikes("pwrite")) return WIDE(__real_pwrite)(descriptor, from, size, offset);
    if (!gpRun->fault.partly || size == 1) return -1;
    ++gpRun->strikeAt;  // the rest fails
    return WIDE(__real_pwrite)(descriptor, from, size / 2, offset);
}
int WIDE(__wrap_ftruncate)(int descriptor, off_t size) {
    return strikes("ftruncate") ? -1 : WIDE(__real_ftruncate)(descriptor, size);
}
int WIDE(__wrap_open)(const char* path, int flags, mode_t mode) {
    return strikes("open") ? -1 : WIDE(__real_open)(path, flags, mode);
}
}

void* operator new(std::size_t size) {
    void* block = strikes("new", true) ? nullptr : std::malloc(size);
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

const std::string PATH = support::configPath("fault.cfg");

// Runs `change` in a process of its own, its output away.
void run(const sFault& fault, int strikeAt, const std::function<void()>& prepare,
         const std::function<bool()>& change) {
    if (gpRun == &gIdle) {
        gpRun = static_cast<sRun*>(
            mmap(nullptr, sizeof(sRun), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0));
    }
    *gpRun = {};
    gpRun->fault = fault;
    gpRun->strikeAt = strikeAt;
    std::fflush(stdout);  // or the child writes it too
    const pid_t child = fork();
    if (child == 0) {
        if (std::freopen("/dev/null", "w", stdout) == nullptr) _exit(1);
        prepare();
        gpRun->watching = true;
        gpRun->result = change();
        gpRun->watching = false;
        while (fault.ends && gpRun->struck)
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

bool isNew(const std::string& left, const std::string& after) {
    return withoutBlankEnd(left) == withoutBlankEnd(after);
}

// Whatever happens the file is old or new, and the result says which. `between` is new enough: its
// last step may be missing.
void expectOldOrNew(const std::string& path, const std::string& before, const std::string& between,
                    const std::string& after, const std::function<void()>& prepare,
                    const std::function<bool()>& change, bool memory) {
    for (const sFault& fault : FAULTS) {
        if (fault.memory && !memory) continue;
        for (int number = 1;; ++number) {
            SCOPED_TRACE(testing::Message() << after.substr(0, 50) << fault.name << ' ' << number);
            support::writeFile(path, before);
            run(fault, number, prepare, change);
            const std::string left = support::readFile(path);
            const std::string trace =
                std::string(gpRun->struck ? gpRun->hit : "") + ": " + left.substr(0, 300);
            EXPECT_EQ(gpRun->struck && (fault.kill || fault.ends), !gpRun->finished) << trace;
            if (gpRun->struck && fault.ends) {
                EXPECT_TRUE(left == before || left == between || left == after) << trace;
            } else if (!gpRun->finished) {
                EXPECT_TRUE(isNew(left, before) || isNew(left, between) || isNew(left, after))
                    << trace;
            } else if (gpRun->result) {
                EXPECT_TRUE(left == after || left == between) << trace;
            } else if (left != before) {
                // The folder that holds the new file could not be stored.
                EXPECT_EQ(after, left) << trace;
                EXPECT_GT(before.size(), 4096U) << trace;
            }
            EXPECT_EQ(fault.kill && access((path + ".new").c_str(), F_OK) == 0,
                      access((path + ".new").c_str(), F_OK) == 0);
            if (!gpRun->struck) break;
        }
        EXPECT_TRUE(gpRun->result);
    }
}

TEST(FileFaults, AChangeLeavesTheOldFileOrTheNewOne) {
    const std::string head = "# head\n[Sec]\nA=1\n";
    const std::string key = "Key=11111111\n";
    const std::string longer = "333333333333";
    // In one block, across the border of two, and before it with the second block moving.
    for (const int filler : {10, 4096 - 26 - 17, 5000}) {
        const std::string pad =
            filler > 100 && filler < 4096 ? "#" + std::string(4057, 'p') + "\n" : "";
        const std::string start = pad + head;
        const std::string tail =
            "Z=26\n\n[Next]\n#" + std::string(filler == 5000 ? 5000 : 10, 'n') + "\nB=2\n";
        const std::string before = start + key + tail;
        const struct {
            std::function<bool(CFileConfig&)> change;
            std::string after;
        } rows[] = {
            {[](CFileConfig& file) { return file.write("Sec", "Key", 22222222); },
             start + "Key=22222222\n" + tail},
            {[&](CFileConfig& file) { return file.write("Sec", "Key", longer); },
             start + "Key=" + longer + "\n" + tail},
            {[](CFileConfig& file) { return file.write("Sec", "Key", 4); },
             start + "Key=4\n" + tail},
            {[](CFileConfig& file) { return file.write("Sec", "New", 5); },
             pad + "# head\n[Sec]\nNew=5\nA=1\n" + key + tail},
            {[](CFileConfig& file) { return file.write("Other", "Key", 1); },
             before + "\n[Other]\nKey=1\n"},
            {[](CFileConfig& file) { return file.removeKey("Sec", "Key"); }, start + tail},
            {[](CFileConfig& file) {
                 CFileConfig::CBatch batch(file);
                 return file.write("Sec", "Key", 4) && file.write("Other", "Key", 1) &&
                        file.removeKey("Sec", "A") && batch.commit();
             },
             pad + "# head\n[Sec]\nKey=4\n" + tail + "\n[Other]\nKey=1\n"},
        };
        for (const auto& row : rows) {
            CFileConfig file;
            expectOldOrNew(
                PATH, before, row.after, row.after, [&] { file.open(PATH, "r+b"); },
                [&] { return row.change(file) && file.close(); }, true);
        }
    }
}

const std::string UNMARKED = "[CONF_STATUS]\nSTATE=0\n";

TEST(FileFaults, APresetAndASeedingAreSavedAsAWhole) {
    auto& facade = *hxl_config_handler::CSingletonHxlConfigHandler::getInstance();
    facade.setDevTypeInfo(2, 2, false);
    hxl_config_handler::sPresetBlock block{};
    block.fVoltageSet[0] = 20.5F;
    const struct {
        const char* file;
        std::string before;
        std::function<bool()> save;
    } rows[] = {
        {"conf_preset.cfg",
         "[INSTRUMENT_SETTING_1_100_VOLTS_DEV]\nVoltageSet=1.000000,1.000000\nFuseState=0,1\n",
         [&] { return facade.savePresetBlock(1, block, true); }},
        {"conf_auto_save.cfg", "[CONF_STATUS]\nSTATE=1\n\n[CONF_ITEM_DBL]\nVOL_LVL=1.0\n",
         [&] { return facade.saveDblValues(0, {20.5}); }},
        {"conf_auto_save.cfg", UNMARKED, [&] { return facade.loadAutoSaveConfig(); }},
    };
    for (const auto& row : rows) {
        const std::string path = support::configPath(row.file);
        support::writeFile(path, row.before);
        run(
            {}, 0, [&] { facade.loadPresetConfig(); }, row.save);
        const std::string after = support::readFile(path);
        EXPECT_NE(row.before, after);
        std::string between = after;
        if (row.before == UNMARKED) between[UNMARKED.size() - 2] = '0';
        expectOldOrNew(
            path, row.before, between, after, [&] { facade.loadPresetConfig(); }, row.save, false);
    }
}

}  // namespace
