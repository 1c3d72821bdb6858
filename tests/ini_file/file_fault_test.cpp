// Faults by number: the N-th call that a change makes fails, or the process ends there, for N = 1,
// 2, 3 ... until none fires. The program is linked with -Wl,--wrap for the calls.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <new>
#include <set>
#include <sstream>
#include <string>

#include "config/manager/hxl_config_handler.h"
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
    int error = 0;        // of the failing call
    bool partly = false;  // a read or a write does a part of its work first
    bool kill = false;    // the process ends instead
    bool memory = false;  // what fails is an allocation
};
constexpr sFault NONE = {"none"};
constexpr sFault FAULTS[] = {{"EIO", EIO},
                             {"ENOSPC after a part", ENOSPC, true},
                             {"killed", 0, false, true},
                             {"killed after a part", 0, true, true},
                             {"no memory", ENOMEM, false, false, true}};
constexpr std::size_t READ_PART = 60;

// What a change did in a child process, in memory that both share.
struct sRun {
    sFault fault;
    int strikeAt;
    int count;
    char struck;  // the call that the fault hit, or 0
    bool watching;
    bool returned;
    bool result;
    char calls[8192];  // p position, r read, t truncate, w write, s sync, c close
};
sRun gIdle;
sRun* gpRun = &gIdle;  // shared from the first run on

bool strikes(char call) {
    if (!gpRun->watching || gpRun->fault.memory != (call == 'm')) return false;
    gpRun->calls[gpRun->count++] = call;
    if (gpRun->count != gpRun->strikeAt) return false;
    gpRun->struck = call;
    const bool later = gpRun->fault.partly && (call == 'w' || call == 'r');
    if (gpRun->fault.kill && !later) raise(SIGKILL);
    errno = gpRun->fault.error;
    return true;
}

// Moves a block by `call`. A fault has it fail as the C library lets it fail, after `part` where
// that is asked for: on a descriptor that refuses it.
template <typename Call>
std::size_t transfer(char name, std::FILE* stream, std::size_t count, std::size_t part, Call call) {
    if (!strikes(name)) return call(count);
    const std::size_t done = gpRun->fault.partly ? call(part) : 0;
    if (gpRun->fault.kill) raise(SIGKILL);
    const int saved = dup(fileno(stream));
    const int refusing = open("/", O_RDONLY);
    dup2(refusing, fileno(stream));
    call(1);
    dup2(saved, fileno(stream));
    close(saved);
    close(refusing);
    return done;
}

}  // namespace

extern "C" {
std::size_t __real_fread(void*, std::size_t, std::size_t, std::FILE*);
std::size_t __real_fwrite(const void*, std::size_t, std::size_t, std::FILE*);
int WIDE(__real_fseeko)(std::FILE*, off_t, int);
int WIDE(__real_ftruncate)(int, off_t);
int __real_fsync(int);
int __real_fclose(std::FILE*);

std::size_t __wrap_fread(void* to, std::size_t size, std::size_t count, std::FILE* stream) {
    return transfer('r', stream, count, READ_PART,
                    [&](std::size_t part) { return __real_fread(to, size, part, stream); });
}
std::size_t __wrap_fwrite(const void* from, std::size_t size, std::size_t count,
                          std::FILE* stream) {
    return transfer('w', stream, count, count / 2,
                    [&](std::size_t part) { return __real_fwrite(from, size, part, stream); });
}
int WIDE(__wrap_fseeko)(std::FILE* stream, off_t offset, int whence) {
    return strikes('p') ? -1 : WIDE(__real_fseeko)(stream, offset, whence);
}
int WIDE(__wrap_ftruncate)(int descriptor, off_t size) {
    return strikes('t') ? -1 : WIDE(__real_ftruncate)(descriptor, size);
}
int __wrap_fsync(int descriptor) {
    return strikes('s') ? -1 : __real_fsync(descriptor);
}
int __wrap_fclose(std::FILE* stream) {
    const bool fails = strikes('c');
    return __real_fclose(stream) != 0 || fails ? EOF : 0;
}
}

void* operator new(std::size_t size) {
    void* block = strikes('m') ? nullptr : std::malloc(size);
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

// Runs `prepare` and, watched, `change`.
void run(const std::function<void()>& prepare, const std::function<bool()>& change) {
    prepare();
    gpRun->watching = true;
    gpRun->result = change();
    gpRun->watching = false;
    gpRun->returned = true;
}

void setFault(const sFault& fault, int strikeAt) {
    if (gpRun == &gIdle) {
        gpRun = static_cast<sRun*>(
            mmap(nullptr, sizeof(sRun), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0));
    }
    *gpRun = {};
    gpRun->fault = fault;
    gpRun->strikeAt = strikeAt;
}

// As run(), in a process of its own.
void runInChild(const std::function<void()>& prepare, const std::function<bool()>& change) {
    std::fflush(stdout);  // or the child writes it too
    const pid_t child = fork();
    if (child == 0) {
        if (std::freopen("/dev/null", "w", stdout) != nullptr) run(prepare, change);
        _exit(0);
    }
    waitpid(child, nullptr, 0);
    gpRun->watching = false;
}

// docs/configuration-files.md, "What a crash leaves", for a change of all from `begin` on.
bool isOutcome(const std::string& before, const std::string& after, std::size_t begin,
               const std::string& left) {
    if (left == before) return true;
    if (left.size() >= begin && after.compare(0, left.size(), left) == 0) return true;
    // In place: the new line's beginning and the old one's end.
    if (left.size() != before.size() || after.size() != before.size()) return false;
    const auto changed = std::mismatch(left.begin(), left.end(), after.begin()).first;
    return std::equal(changed, left.end(), before.begin() + (changed - left.begin()));
}

TEST(FileFaults, AChangeLeavesTheOldFileTheNewOneOrOneThatEndsInTheChange) {
    const std::string path = support::configPath("fault.cfg");
    const std::string head = "# head\n[Sec]\nA=1\n";
    const std::string key = "Key=11111111\n";
    const std::string tail = "Z=26\n\n[Next]\n#" + std::string(5000, 'n') + "\nB=2\n";
    const std::string before = head + key + tail;
    const std::string longer = "333333333333";
    const struct {
        const char* calls;  // without a fault; a capital reads what a rewrite keeps
        std::function<bool(CFileConfig&)> change;
        std::string after;
        std::size_t begin;
    } rows[] = {
        {"prpwsc", [](CFileConfig& file) { return file.write("Sec", "Key", 22222222); },
         head + "Key=22222222\n" + tail, head.size()},
        {"prRtpwsc", [&](CFileConfig& file) { return file.write("Sec", "Key", longer); },
         head + "Key=" + longer + "\n" + tail, head.size()},
        {"prRtpwsc", [](CFileConfig& file) { return file.write("Sec", "Key", 4); },
         head + "Key=4\n" + tail, head.size()},
        {"prrPRRtpwsc", [](CFileConfig& file) { return file.write("Sec", "New", 5); },
         "# head\n[Sec]\nNew=5\nA=1\n" + key + tail, std::strlen("# head\n")},
        {"prrprpwsc", [](CFileConfig& file) { return file.write("Other", "Key", 1); },
         before + "\n[Other]\nKey=1\n", before.size()},
        {"prRtpwsc", [](CFileConfig& file) { return file.removeKey("Sec", "Key"); }, head + tail,
         head.size()},
    };
    for (const auto& row : rows) {
        for (const sFault& fault : FAULTS) {
            int number = 0;
            do {
                SCOPED_TRACE(testing::Message() << row.calls << ' ' << row.after.substr(0, 40)
                                                << fault.name << ' ' << number + 1);
                support::writeFile(path, before);
                CFileConfig file;
                const auto open = [&] { file.open(path, "r+b"); };
                const auto change = [&] {
                    const bool changed = row.change(file);
                    return file.close() && changed;
                };
                setFault(fault, ++number);
                std::string printed;
                if (fault.kill)
                    runInChild(open, change);
                else
                    printed = support::printedBy([&] { run(open, change); });
                const std::string left = support::readFile(path);
                EXPECT_TRUE(isOutcome(before, row.after, row.begin, left)) << left;
                EXPECT_EQ(gpRun->struck && fault.kill, !gpRun->returned);
                if (gpRun->result) {
                    EXPECT_EQ(row.after, left);
                }
                // What was read before a read failed may have been enough.
                if (gpRun->struck && gpRun->struck != 'r') {
                    EXPECT_FALSE(gpRun->result);
                }
                std::string expected;
                if (gpRun->struck == 'm') expected = "riSize = -1 \n";
                if (!fault.memory && std::isupper(row.calls[number - 1])) {
                    expected = "riSize = -1,2 \n";
                }
                if (gpRun->struck == 't')
                    expected = "truncate fail : " + std::to_string(fault.error) + " \n";
                // A part of the first read may hold the key, which moves the failure to the rest.
                if (!fault.kill && (!fault.partly || gpRun->struck != 'r')) {
                    EXPECT_EQ(expected, printed);
                }
            } while (gpRun->struck);
            EXPECT_TRUE(gpRun->result);
            if (!fault.memory) {
                EXPECT_STRCASEEQ(row.calls, gpRun->calls);
            }
        }
    }
}

TEST(FileFaults, AValueThatAFailedReadCutsOffIsNotRead) {
    const std::string path = support::configPath("fault.cfg");
    support::writeFile(path, "[Sec]\n" + std::string(READ_PART - 13, '#') + "\nKey=1234\n");
    CFileConfig file;
    std::string value;
    setFault(FAULTS[1], 2);
    run([&] { file.open(path, "r+b"); }, [&] { return file.read("Sec", "Key", value); });
    EXPECT_EQ('r', gpRun->struck);
    EXPECT_FALSE(gpRun->result);
}

std::set<std::string> keyLines(const std::string& text) {
    std::istringstream stream(text);
    std::set<std::string> lines;
    for (std::string line; std::getline(stream, line);)
        if (line.find('=') != std::string::npos) lines.insert(line);
    return lines;
}

const std::string UNMARKED = "[CONF_STATUS]\nSTATE=0\n";
const std::string MARKED = "[CONF_STATUS]\nSTATE=1\n";

// A save is a row of changes: it fails if one of them does, and mends the file when it is repeated.
void expectMendedByTheNextSave(const std::string& path, const std::string& before,
                               const std::function<void()>& prepare,
                               const std::function<bool()>& save) {
    support::writeFile(path, before);
    setFault(NONE, 0);
    runInChild(prepare, save);
    EXPECT_TRUE(gpRun->result);
    const std::string saved = support::readFile(path);
    const std::string calls = gpRun->calls;
    EXPECT_EQ("wsc", calls.substr(calls.rfind('w'), 3)) << "forced to storage";
    std::set<std::string> mended = {saved};
    // Each call fails after a part, then the process ends at each.
    for (const sFault& fault : {FAULTS[1], FAULTS[3]}) {
        for (int number = 1;; ++number) {
            SCOPED_TRACE(testing::Message() << path << ' ' << fault.name << ' ' << number);
            support::writeFile(path, before);
            setFault(fault, number);
            runInChild(prepare, save);
            if (!gpRun->struck) break;
            EXPECT_EQ(fault.kill, !gpRun->returned);
            const std::string left = support::readFile(path);
            if (gpRun->result) {
                // A mark that cannot be set is no failure: the next start seeds once more.
                const bool unmarked = left.find(UNMARKED) == 0;
                EXPECT_EQ(saved, unmarked ? MARKED + left.substr(UNMARKED.size()) : left);
            } else if (!fault.kill && before == UNMARKED) {
                EXPECT_NE(0U, left.find(MARKED)) << left;
            }
            if (!mended.insert(left).second) continue;
            setFault(NONE, 0);
            runInChild(prepare, save);
            EXPECT_TRUE(gpRun->result);
            EXPECT_EQ(keyLines(saved), keyLines(support::readFile(path))) << left;
        }
    }
}

TEST(FileFaults, APresetSaveIsMendedByTheNext) {
    auto& facade = *hxl_config_handler::CSingletonHxlConfigHandler::getInstance();
    facade.setDevTypeInfo(2, 2, false);
    hxl_config_handler::sPresetBlock block{};
    block.fVoltageSet[0] = 20.5F;
    expectMendedByTheNextSave(
        support::configPath("conf_preset.cfg"),
        "[INSTRUMENT_SETTING_1_100_VOLTS_DEV]\nVoltageSet=1.000000,1.000000\nFuseState=0,1\n",
        [&] { facade.loadPresetConfig(); }, [&] { return facade.savePresetBlock(1, block, true); });
}

TEST(FileFaults, AnItemsSaveIsMendedByTheNext) {
    auto& facade = *hxl_config_handler::CSingletonHxlConfigHandler::getInstance();
    expectMendedByTheNextSave(
        support::configPath("conf_auto_save.cfg"), MARKED + "\n[CONF_ITEM_DBL]\nVOL_LVL=1.0\n",
        [] {}, [&] { return facade.saveDblValues(0, {20.5}); });
}

TEST(FileFaults, AFirstSeedingIsMendedByTheNextStart) {
    auto& facade = *hxl_config_handler::CSingletonHxlConfigHandler::getInstance();
    facade.setDevTypeInfo(2, 2, false);
    expectMendedByTheNextSave(
        support::configPath("conf_auto_save.cfg"), UNMARKED, [] {},
        [&] { return facade.loadAutoSaveConfig(); });
}

}  // namespace
