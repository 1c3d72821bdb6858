#include "shared_memory/segment_recovery.h"

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/mman.h>

#include <chrono>
#include <thread>

#include "shared_memory/mutex_words.h"
#include "shared_memory/peer_segment.h"
#include "support/peer.h"

namespace {

using namespace support;
using namespace std::chrono_literals;
using core_utils::CPeerSegment;
using eOutcome = CPeerSegment::eOutcome;

TEST(SegmentRecovery, AStoppedHolderIsAliveUntilItIsKilled) {
    CPeerMemory().setDoubleVector(0, {1.0});
    const pid_t holder = fork();
    if (holder == 0) {
        CPeerMemory memory;
        auto stop = [] { raise(SIGSTOP); };
        memory.mpSharedMemory->atomic_func(stop);
        _exit(0);
    }
    CPeerSegment segment;
    ASSERT_TRUE(segment.attach());
    int status = 0;
    waitpid(holder, &status, WUNTRACED);
    Doubles values;
    EXPECT_EQ(eOutcome::LOCKED, segment.read(0, values).outcome);
    kill(holder, SIGKILL);
    EXPECT_TRUE(segment.read(0, values)) << "of one that nobody has asked for its status";
    waitpid(holder, &status, 0);
}

TEST(SegmentRecovery, ManyRecoverAtOnceAndThoseThatDieAtItAreRecoveredToo) {
    CPeerMemory().setDoubleVector(0, {1.0});
    CPeer dead([](CPeerMemory& memory) {
        auto die = [] { raise(SIGKILL); };
        memory.mpSharedMemory->atomic_func(die);
        return false;
    });
    const auto write = [](CPeerMemory& memory) {
        for (unsigned char i = 0; i < 20; ++i)
            if (!memory.setByteVector(7, Bytes(i, i))) return false;
        return true;
    };
    CPeer writers[] = {CPeer(write), CPeer(write), CPeer(write), CPeer(write)};
    ASSERT_EQ(-SIGKILL, dead.run());
    for (CPeer& writer : writers)
        writer.start();
    for (CPeer& writer : writers)
        EXPECT_EQ(0, writer.wait());
    EXPECT_EQ(Bytes(19, 19), CPeerMemory().getByteVector(7));
}

// Numbers of threads come again.
TEST(SegmentRecovery, ALockUnderTheNumberOfAnotherThreadOrOfOnesOwnIsTakenOver) {
    using Words = core_utils::sMutexWords<pthread_mutex_t>;
    CPeerMemory().setDoubleVector(0, {1.0});
    const pid_t stranger = fork();
    if (stranger == 0) {
        munmap(CPeerMemory().mpSharedMemory->get_address(), 0x140000);
        execlp("sleep", "sleep", "20", nullptr);
        _exit(1);
    }
    CPeerMemory memory;
    pthread_mutex_t& lock = memory.mpSharedMemory->lock();
    ASSERT_EQ(0, pthread_mutex_trylock(&lock));
    EXPECT_TRUE(memory.setByteVector(7, {2})) << "by this thread's number";
    std::this_thread::sleep_for(100ms);
    ASSERT_EQ(0, pthread_mutex_trylock(&lock));
    ASSERT_TRUE(Words::claim(lock, Words::holderOf(lock), stranger));
    EXPECT_TRUE(memory.setByteVector(7, {3})) << "by a process without the segment";
    kill(stranger, SIGKILL);
    waitpid(stranger, nullptr, 0);
}

}  // namespace
