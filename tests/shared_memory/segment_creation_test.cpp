// Faults by number: the N-th call on the way to a new segment fails, or the process dies there, for
// N = 1, 2, 3 ... until none fires. The program is linked with -Wl,--wrap for the calls.
#include <fcntl.h>
#include <signal.h>
#include <sys/stat.h>

#include <cerrno>
#include <filesystem>

#include "shared_memory/segment_creation.h"
#include "support/files.h"
#include "support/peer.h"

namespace {

int gCalls = 0;
int gStrikeAt = 0;
bool gKills = false;

bool strikes() {
    if (gStrikeAt == 0 || ++gCalls != gStrikeAt) return false;
    if (gKills) raise(SIGKILL);
    errno = ENOSPC;
    return true;
}

}  // namespace

#define FAILING(name, result, failure, parameters, arguments) \
    extern "C" result __real_##name parameters;               \
    extern "C" result __wrap_##name parameters {              \
        return strikes() ? failure : __real_##name arguments; \
    }
#ifdef __GLIBC__  // its names of the calls with 64-bit offsets
#define FAILING_WIDE(name, ...) FAILING(name##64, __VA_ARGS__)
#else
#define FAILING_WIDE FAILING
#endif
FAILING(shm_open, int, -1, (const char* name, int flags, mode_t mode), (name, flags, mode))
FAILING(fchmod, int, -1, (int file, mode_t mode), (file, mode))
FAILING(linkat, int, -1, (int at, const char* from, int to, const char* name, int flags),
        (at, from, to, name, flags))
FAILING_WIDE(open, int, -1, (const char* path, int flags, mode_t mode), (path, flags, mode))
FAILING_WIDE(ftruncate, int, -1, (int file, off_t size), (file, size))
FAILING_WIDE(fallocate, int, -1, (int file, int mode, off_t from, off_t size),
             (file, mode, from, size))

namespace {

using namespace support;

constexpr char SEGMENT_FILE[] = "/dev/shm/CONF_AUTO_SAVE_MEM";

// Attaches in a process of its own; true if the fault struck.
bool attachesWithFault(bool kills, int number) {
    const pid_t child = fork();
    if (child == 0) {
        std::fclose(stdout);
        gKills = kills;
        gStrikeAt = number;
        CPeerMemory memory;
        _exit(gCalls >= number ? 1 : 0);
    }
    int status = 0;
    waitpid(child, &status, 0);
    EXPECT_TRUE(WIFEXITED(status) || (kills && WTERMSIG(status) == SIGKILL)) << status;
    return status != 0;
}

TEST(SegmentCreation, LeavesAWholeSegmentOrNoneWhereverItFailsOrDies) {
    for (const bool kills : {false, true}) {
        int number = 0;
        bool struck = true;
        for (; struck; ++number) {
            unlink(SEGMENT_FILE);
            struck = attachesWithFault(kills, number + 1);
            for (const auto& entry : std::filesystem::directory_iterator("/dev/shm"))
                EXPECT_EQ(SEGMENT_FILE, entry.path()) << number;
            ASSERT_EQ("", printedBy([] { CPeerMemory(); })) << "the next one, " << number;
        }
        EXPECT_GT(number, 7);
    }
}

TEST(SegmentCreation, MakesWhatAPeerWithoutTheLibraryWouldMake) {
    core_utils::createSegment("/CONF_AUTO_SAVE_MEM", 0x140000);
    core_utils::Segment(boost::interprocess::create_only, "PEER", 0x140000);
    EXPECT_TRUE(readFile(SEGMENT_FILE) == readFile("/dev/shm/PEER"));
}

// Each finds what the other has made.
TEST(SegmentCreation, TwoAtOnceEndWithOneSegmentAlsoBesideAPeerWithoutTheLibrary) {
    for (int round = 0; round < 100; ++round) {
        unlink(SEGMENT_FILE);
        const pid_t peer = fork();
        if (peer == 0) {
            using namespace boost::interprocess;
            core_utils::Segment segment(open_or_create, "CONF_AUTO_SAVE_MEM", 0x140000, nullptr,
                                        permissions(0644));
            _exit(segment.construct<int>("PEER", std::nothrow)(1) != nullptr ? 0 : 1);
        }
        CPeerMemory memory;
        int status = -1;
        waitpid(peer, &status, 0);
        ASSERT_EQ(0, status);
        ASSERT_NE(nullptr, memory.mpSharedMemory->find<int>("PEER").first) << round;
    }
}

}  // namespace
