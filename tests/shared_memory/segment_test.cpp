// Making the segment, its locks, changes of its heap, and what is left when a holder dies.
#include <gtest/gtest.h>
#include <sys/mount.h>
#include <sys/stat.h>

#include <atomic>
#include <cerrno>
#include <filesystem>
#include <future>
#include <optional>

#include "shared_memory/peer_segment.h"
#include "shared_memory/segment_creation.h"
#include "support/files.h"
#include "support/peer.h"

// Faults by number: the N-th call on the way to a new segment fails, or the process dies there, for
// N = 1, 2, 3 ... until none fires. The program is linked with -Wl,--wrap for the calls.
namespace {

int gCallsLeft = 0;  // up to the fault
bool gKills = false;

bool strikes() {
    if (gCallsLeft == 0 || --gCallsLeft > 0) return false;
    if (gKills) raise(SIGKILL);
    errno = ENOSPC;
    return true;
}

}  // namespace

#define FAILING(name, parameters, arguments)             \
    extern "C" int __real_##name parameters;             \
    extern "C" int __wrap_##name parameters {            \
        return strikes() ? -1 : __real_##name arguments; \
    }
#ifdef __GLIBC__  // its names of the calls with 64-bit offsets
#define FAILING_WIDE(name, ...) FAILING(name##64, __VA_ARGS__)
#else
#define FAILING_WIDE FAILING
#endif
FAILING(shm_open, (const char* name, int flags, mode_t mode), (name, flags, mode))
FAILING(fchmod, (int file, mode_t mode), (file, mode))
FAILING(linkat, (int at, const char* from, int to, const char* name, int flags),
        (at, from, to, name, flags))
FAILING_WIDE(open, (const char* path, int flags, mode_t mode), (path, flags, mode))
FAILING_WIDE(ftruncate, (int file, off_t size), (file, size))
FAILING_WIDE(fallocate, (int file, int mode, off_t from, off_t size), (file, mode, from, size))

namespace {

using namespace support;
using namespace std::chrono_literals;
using core_utils::CPeerSegment;
using core_utils::Segment;
using eOutcome = CPeerSegment::eOutcome;
using MutexWords = core_utils::sMutexWords<pthread_mutex_t>;

TEST(SegmentCreation, LeavesAWholeSegmentOrNoneWhereverItFailsOrDies) {
    for (const bool kills : {false, true}) {
        int number = 1;
        for (int status = -1; status != 0; ++number) {
            SCOPED_TRACE(number);
            unlink(SEGMENT_FILE);
            const pid_t child = fork();
            if (child == 0) {
                std::fclose(stdout);
                gKills = kills;
                gCallsLeft = number;
                CPeerMemory memory;
                _exit(gCallsLeft == 0 ? 1 : 0);
            }
            status = statusOf(child);
            EXPECT_TRUE(status == 0 || status == (kills ? -SIGKILL : 1)) << status;
            for (const auto& entry : std::filesystem::directory_iterator("/dev/shm"))
                EXPECT_EQ(SEGMENT_FILE, entry.path());
            ASSERT_EQ("", printedBy([] { CPeerMemory(); })) << "the next one";
        }
        EXPECT_GT(number, 7);
    }
}

// Boost creates the segment where no unnamed file can be made. Without room its pages would end in
// SIGBUS.
TEST(SegmentCreation, LooksForRoomAlsoWithoutAnUnnamedFile) {
    for (const bool isLimited : {true, false}) {
        ASSERT_EQ(0, mount("tmpfs", "/dev/shm", "tmpfs", 0, isLimited ? "size=1m" : "size=0"));
        gCallsLeft = 2;  // after the look for the segment
        EXPECT_EQ(isLimited, !printedBy([] { CPeerMemory(); }).empty());
        EXPECT_EQ(isLimited, !std::filesystem::exists(SEGMENT_FILE));
    }
}

TEST(SegmentCreation, MakesWhatAPeerWithoutTheLibraryWouldMake) {
    core_utils::createSegment("/CONF_AUTO_SAVE_MEM", 0x140000);
    Segment(boost::interprocess::create_only, "PEER", 0x140000);
    EXPECT_TRUE(readFile(SEGMENT_FILE) == readFile("/dev/shm/PEER"));
}

// Each finds what the other has made.
TEST(SegmentCreation, TwoAtOnceEndWithOneSegmentAlsoBesideAPeerWithoutTheLibrary) {
    for (int round = 0; round < 100; ++round) {
        unlink(SEGMENT_FILE);
        const pid_t peer = fork();
        if (peer == 0) {
            Segment segment(boost::interprocess::open_or_create, "CONF_AUTO_SAVE_MEM", 0x140000);
            _exit(segment.construct<int>("PEER", std::nothrow)(1) != nullptr ? 0 : 1);
        }
        CPeerMemory memory;
        ASSERT_EQ(0, statusOf(peer));
        ASSERT_NE(nullptr, memory.mpSharedMemory->find<int>("PEER").first) << round;
    }
}

TEST(SegmentLock, TheEndWaitsForTheAccessUnderWayAndLetsNoOtherBegin) {
    static auto& memory = *new CPeerMemory;  // never freed: the thread that must wait uses it
    static std::atomic<bool> passed{false};
    core_utils::withSegmentLock(*memory.mpSharedMemory, [] {
        EXPECT_FALSE(core_utils::CExitGate::close(20ms));
        return true;
    });
    EXPECT_TRUE(core_utils::CExitGate::close(0ms));
    std::thread([] {
        memory.getDoubleVector(0);
        passed = true;
    }).detach();
    std::this_thread::sleep_for(20ms);
    EXPECT_FALSE(passed);
}

// A page of the copy stays as it was when the copy first wrote there.
TEST(SegmentChange, KeepsWhatAPlainPeerWritesMeanwhileWithoutALock) {
    CPeerMemory memory;
    memory.setDoubleVector(0, {1.0});
    auto& segment = *memory.mpSharedMemory;
    double* value = memory.vector<double>("VOLTAGE_DATA_MEM").data();
    core_utils::withSegmentLock(segment, [&] {
        return core_utils::changeStructure(segment, [&](const core_utils::CPrivateCopy& copy) {
            const auto offset = segment.area().offsetOf(value);
            *reinterpret_cast<volatile double*>(copy.area().base + offset) = 1.0;
            *value = 2.0;
            return true;
        });
    });
    EXPECT_EQ(Doubles{2.0}, memory.getDoubleVector(0));
}

TEST(SegmentLock, EveryAccessWaitsForAStoppedHolderAndTakesTheLockOverOnceItIsKilled) {
    CPeer holder(raiseUnderLock(SIGSTOP));
    CPeerSegment segment;
    ASSERT_TRUE(segment.open() && segment.write(0, Doubles{1.0}));
    CPeerMemory memory;
    holder.start();
    waitid(P_PID, static_cast<id_t>(holder.pid()), nullptr, WSTOPPED | WNOWAIT);
    Doubles values;
    const std::function<CPeerSegment::sResult()> accesses[] = {
        [&] { return segment.read(0, values); },
        [&] { return segment.write(1, Doubles{1.0}); },
        [&] { return segment.set<double>(0, 0, 2.0); },
        [&] { return segment.remove(0); },
    };
    std::vector<std::future<CPeerSegment::sResult>> results;
    for (const auto& access : accesses)
        results.push_back(std::async(std::launch::async, access));
    EXPECT_EQ(Doubles{}, memory.getDoubleVector(0));
    for (auto& result : results)
        EXPECT_EQ(eOutcome::LOCKED, result.get().outcome);
    kill(holder.pid(), SIGKILL);
    EXPECT_TRUE(segment.read(0, values)) << "of one that nobody has asked for its status";
    EXPECT_EQ(Doubles{1.0}, values);
    EXPECT_EQ(-SIGKILL, holder.wait());
}

TEST(SegmentRecovery, ManyRecoverAtOnceAndThoseThatDieAtItAreRecoveredToo) {
    const auto write = [](CPeerMemory& memory) {
        for (unsigned char i = 0; i < 20; ++i)
            if (!memory.setByteVector(7, Bytes(i, i))) return false;
        return true;
    };
    CPeer dead(raiseUnderLock(SIGKILL));
    CPeer writers[] = {CPeer(write), CPeer(write), CPeer(write), CPeer(write)};
    ASSERT_EQ(-SIGKILL, dead.run());
    for (CPeer& writer : writers)
        writer.start();
    for (CPeer& writer : writers)
        EXPECT_EQ(0, writer.wait());
    EXPECT_EQ(Bytes(19, 19), CPeerMemory().getByteVector(7));
}

// Plain peers wait for the heap's lock for ever.
TEST(SegmentRecovery, OfOurOwnIsNoForeignDeathAndUnlocksTheHeapIfTheDeadHeldIt) {
    for (const bool heldHeap : {true, false}) {
        CPeer dead([&](CPeerMemory& memory) {
            Segment& segment = *memory.mpSharedMemory;
            memory.setDoubleVector(0, Doubles(heldHeap ? 3 : 4));  // a change of the heap
            const core_utils::CSegmentLock lock(segment);
            std::optional<core_utils::CHeapLock> heap;
            if (heldHeap) heap.emplace(segment);
            return raise(SIGKILL) == 0;
        });
        ASSERT_EQ(-SIGKILL, dead.run());
        CPeerMemory memory;
        pthread_mutex_t& heap = memory.mpSharedMemory->heapLock();
        if (!heldHeap) pthread_mutex_lock(&heap);
        EXPECT_FALSE(memory.getDoubleVector(0).empty());
        EXPECT_EQ(!heldHeap, isLocked(heap));
        EXPECT_EQ(0U, memory.foreignDeaths());
    }
}

// Numbers of threads come again.
TEST(SegmentRecovery, ALockUnderAnotherThreadsNumberOnesOwnOrNoneIsTakenOver) {
    const pid_t stranger = fork();
    if (stranger == 0) {
        execlp("sleep", "sleep", "20", nullptr);
        _exit(1);
    }
    CPeerMemory memory;
    pthread_mutex_t& lock = memory.mpSharedMemory->lock();
    std::this_thread::sleep_for(100ms);
    for (const pid_t owner : {getpid(), stranger, 0}) {
        ASSERT_EQ(0, pthread_mutex_trylock(&lock));
        ASSERT_TRUE(MutexWords::claim(lock, MutexWords::holderOf(lock), owner));
        EXPECT_TRUE(memory.setByteVector(7, {2})) << owner;
    }
    kill(stranger, SIGKILL);
    waitpid(stranger, nullptr, 0);
}

TEST(SegmentRecovery, NamesWhatAPlainPeerHasBroken) {
    CPeerMemory memory;
    ASSERT_TRUE(memory.setDoubleVector(0, {1.0}) && memory.setByteVector(7, {1}));
    auto* words = memory.mpSharedMemory->find<std::ptrdiff_t>("VOLTAGE_DATA_MEM").first;
    words[1] += 65536;  // the elements
    CPeer(raiseUnderLock(SIGKILL)).run();
    EXPECT_EQ(
        "shared memory [CONF_AUTO_SAVE_MEM]: a process died while it changed VOLTAGE_DATA_MEM, "
        "which is without elements now; write it again\n",
        printedOnStderrBy([&] { EXPECT_EQ(Bytes{1}, memory.getByteVector(7)); }));
    EXPECT_TRUE(memory.getDoubleVector(0).empty() && memory.setDoubleVector(0, {2.0}));
    EXPECT_EQ(1U, memory.foreignDeaths());

    *reinterpret_cast<char*>(words + 4) = '\0';  // its name in the index; the heap is sound
    CPeer(raiseUnderLock(SIGKILL)).run();
    CPeerSegment segment;
    ASSERT_TRUE(segment.attach());
    const auto begin = std::chrono::steady_clock::now();
    Bytes values;
    EXPECT_EQ(
        "shared memory [CONF_AUTO_SAVE_MEM]: its index of the objects is damaged; stop all that "
        "use the segment, remove it and start again\n",
        printedOnStderrBy([&] {
            EXPECT_EQ(std::string("CONF_AUTO_SAVE_MEM is damaged: ") + core_utils::INDEX_DAMAGED,
                      segment.read(7, values).reason);
        }));
    EXPECT_EQ(eOutcome::DAMAGED, segment.write(1, Doubles{1.0}).outcome);
    EXPECT_LT(std::chrono::steady_clock::now() - begin, 500ms);
}

// The heap and the tree are sound: only its memory has been given away.
TEST(SegmentRecovery, AnIndexedObjectInFreeMemoryStopsEveryChange) {
    CPeerMemory memory;
    Segment& segment = *memory.mpSharedMemory;
    void* const before = segment.allocate(1000);
    memory.setDoubleVector(0, {});
    const auto offset = segment.area().offsetOf(&memory.vector<double>("VOLTAGE_DATA_MEM"));
    std::uint32_t block = 0;
    const core_utils::CBlocks blocks(segment.area());
    for (const auto& each : blocks.all())
        if (each.memory < offset) block = each.memory;
    segment.deallocate(before);
    segment.deallocate(segment.area().base +
                       block);  // joins its neighbours: nothing is written there
    Doubles values;
    EXPECT_TRUE(memory.readDoubleVector("VOLTAGE_DATA_MEM", values));
    const auto write = [&] { EXPECT_FALSE(memory.setDoubleVector(1, {1.0})); };
    EXPECT_EQ(
        "shared memory [CONF_AUTO_SAVE_MEM]: its index of the objects is damaged; stop all that "
        "use the segment, remove it and start again\n",
        printedOnStderrBy([&] { write(), write(); }))
        << "told once";
}

}  // namespace
