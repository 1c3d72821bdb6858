#include <gtest/gtest.h>
#include <signal.h>
#include <sys/mman.h>

#include <chrono>
#include <thread>

#include "shared_memory/mutex_words.h"
#include "shared_memory/peer_segment.h"
#include "shared_memory/segment_journal.h"
#include "support/files.h"
#include "support/peer.h"

namespace {

using namespace support;
using namespace std::chrono_literals;
using core_utils::CPeerSegment;
using eOutcome = CPeerSegment::eOutcome;

TEST(SegmentRecovery, AStoppedHolderIsAliveUntilItIsKilled) {
    CPeerMemory().setDoubleVector(0, {1.0});
    CPeer holder(raiseUnderLock(SIGSTOP));
    holder.start();
    CPeerSegment segment;
    ASSERT_TRUE(segment.attach());
    int status = 0;
    waitpid(holder.pid(), &status, WUNTRACED);
    Doubles values;
    EXPECT_EQ(eOutcome::LOCKED, segment.read(0, values).outcome);
    kill(holder.pid(), SIGKILL);
    EXPECT_TRUE(segment.read(0, values)) << "of one that nobody has asked for its status";
    EXPECT_EQ(-SIGKILL, holder.wait());
}

TEST(SegmentRecovery, ManyRecoverAtOnceAndThoseThatDieAtItAreRecoveredToo) {
    CPeerMemory().setDoubleVector(0, {1.0});
    CPeer dead(raiseUnderLock(SIGKILL));
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

    *reinterpret_cast<char*>(words + 4) = '\0';  // its name in the index; the heap is sound
    CPeer(raiseUnderLock(SIGKILL)).run();
    CPeerSegment segment;
    ASSERT_TRUE(segment.attach());
    const auto begin = std::chrono::steady_clock::now();
    Bytes values;
    EXPECT_EQ(std::string("CONF_AUTO_SAVE_MEM is damaged: ") + core_utils::INDEX_DAMAGED,
              segment.read(7, values).reason);
    EXPECT_EQ(eOutcome::DAMAGED, segment.write(1, Doubles{1.0}).outcome);
    EXPECT_LT(std::chrono::steady_clock::now() - begin, 500ms);
}

}  // namespace
