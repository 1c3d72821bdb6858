// Nobody's death stops the others. A death is tried at every store that other processes can see: a
// child writes down each state of the segment that it brings about, and each is put back when it is
// dead.
#include "shared_memory/segment_recovery.h"

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/mman.h>
#include <ucontext.h>

#include <chrono>
#include <cstring>
#include <thread>

#include "shared_memory/mutex_words.h"
#include "shared_memory/peer_segment.h"
#include "support/files.h"
#include "support/peer.h"

namespace {

using namespace support;
using namespace std::chrono_literals;
using core_utils::CPeerSegment;
using core_utils::CSharedMemory;
using core_utils::sArea;
using core_utils::Segment;
using core_utils::SegmentAllocator;
using core_utils::SegmentVector;
using eOutcome = CPeerSegment::eOutcome;
using std::chrono::steady_clock;

// Every state of the segment on the way through an access, as the difference to the one before.
class CStates {
  public:
    // `action` runs in a process of its own, which has ended afterwards.
    template <typename Action>
    CStates(const sArea& area, Action action)
        : mArea(area), mFirst(area.base, area.base + area.size) {
        mLog = static_cast<sLog*>(
            mmap(nullptr, sizeof(sLog), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0));
        const pid_t child = fork();
        if (child == 0) {
            alarm(20);
            mLast = mFirst;
            recorder = this;
            handle(SIGSEGV, beforeStore);
            handle(SIGTRAP, afterStore);
            protect(PROT_READ);
            action();
            _exit(0);
        }
        int status = 0;
        waitpid(child, &status, 0);
        EXPECT_EQ(0, status);
    }
    ~CStates() { munmap(mLog, sizeof(sLog)); }

    // Puts each state into the segment and calls `check` with its number, until one fails.
    template <typename Check>
    void replay(Check check) const {
        auto image = mFirst;
        std::size_t state = 0;
        for (std::size_t i = 0; i < mLog->size; ++i) {
            const sChange& change = mLog->changes[i];
            if (change.offset != END_OF_STATE) {
                image[change.offset] = change.byte;
                continue;
            }
            std::memcpy(mArea.base, image.data(), image.size());
            check(state++);
            if (testing::Test::HasFailure()) return;
        }
        EXPECT_GT(state, 1U);
    }

  private:
    static constexpr std::uint32_t END_OF_STATE = ~0U;
    static constexpr std::size_t TRAP_FLAG = 0x100;
    // What the tests use lies before this; behind it only the heap's end changes.
    static constexpr std::size_t USED = 0x18000, END = 64;

    struct sChange {
        std::uint32_t offset;
        unsigned char byte;
    };
    struct sLog {
        std::size_t size;
        sChange changes[1000000];
    };

    static void handle(int signal, void (*handler)(int, siginfo_t*, void*)) {
        struct sigaction action {};
        action.sa_sigaction = handler;
        action.sa_flags = SA_SIGINFO;
        sigaction(signal, &action, nullptr);
    }

    // Lets the one instruction that stores go on, and stops after it.
    static void beforeStore(int, siginfo_t* info, void* context) {
        if (!recorder->mArea.contains(info->si_addr, 1)) _exit(1);
        recorder->protect(PROT_READ | PROT_WRITE);
        static_cast<ucontext_t*>(context)->uc_mcontext.gregs[REG_EFL] |= TRAP_FLAG;
    }
    static void afterStore(int, siginfo_t*, void* context) {
        static_cast<ucontext_t*>(context)->uc_mcontext.gregs[REG_EFL] &=
            ~static_cast<greg_t>(TRAP_FLAG);
        recorder->protect(PROT_READ);
        recorder->record(0, USED);
        recorder->record(recorder->mArea.size - END, recorder->mArea.size);
        recorder->mLog->changes[recorder->mLog->size++] = {END_OF_STATE, 0};
    }

    void protect(int access) const { mprotect(mArea.base, mArea.size, access); }

    void record(std::size_t begin, std::size_t end) {
        if (std::memcmp(&mLast[begin], mArea.base + begin, end - begin) == 0) return;
        for (std::size_t i = begin; i < end; ++i) {
            if (mLast[i] == mArea.base[i]) continue;
            mLast[i] = mArea.base[i];
            mLog->changes[mLog->size++] = {static_cast<std::uint32_t>(i), mLast[i]};
        }
    }

    static CStates* recorder;
    const sArea mArea;
    std::vector<unsigned char> mFirst;
    std::vector<unsigned char> mLast;
    sLog* mLog;
};
CStates* CStates::recorder = nullptr;

void createWithValues() {
    CSharedMemory(true);
    CPeerMemory memory;
    memory.setStringVector(24, {"short", std::string(40, 'l')});
    memory.setDoubleVector(0, {1.0, 2.0});
    memory.setByteVector(7, {1});
}

bool dieWithLock(CPeerMemory& memory) {
    auto die = [] { raise(SIGKILL); };
    memory.mpSharedMemory->atomic_func(die);
    return false;
}

struct sCase {
    const char* what;
    std::function<void(CPeerMemory&)> act;
};

TEST(DeathAtAnyStore, OfOursLeavesTheOldVectorsOrTheNewOnes) {
    const sCase cases[] = {
        {"same size",
         [](CPeerMemory& m) {
             m.setDoubleVector(0, {3.0, 4.0});
         }},
        {"texts",
         [](CPeerMemory& m) {
             m.setStringVector(24, {std::string(60, 'n'), "", "x"});
         }},
        {"construct", [](CPeerMemory& m) { m.setDoubleVector(1, {6.0}); }},
        {"remove",
         [](CPeerMemory& m) {
             core_utils::CVectorAccess<std::string>::destroy(*m.mpSharedMemory, "WLAN_SSID_MEM");
         }},
        {"recover", [](CPeerMemory& m) { m.getStringVector(24); }},
    };
    const auto values = [](CPeerMemory& m) {
        return std::tuple(m.getStringVector(24), m.getDoubleVector(0), m.getDoubleVector(1));
    };
    for (const auto& row : cases) {
        createWithValues();
        CPeerMemory memory;
        const auto before = values(memory);
        CPeer peer(dieWithLock);
        if (row.what == std::string("recover")) {
            ASSERT_EQ(-SIGKILL, peer.run());
        }
        const CStates states(memory.mpSharedMemory->area(), [&] { row.act(memory); });
        const auto after = values(memory);
        states.replay([&](std::size_t i) {
            const auto now = values(memory);
            ASSERT_TRUE(now == before || now == after) << row.what << ", store " << i;
            ASSERT_TRUE(memory.setDoubleVector(2, Doubles(9, 1.0))) << row.what << ", store " << i;
            ASSERT_TRUE(memory.mpSharedMemory->check_sanity());
        });
    }
}

// What a plain peer of Boost does with the lock.
template <typename Change>
void changeAsPlainPeer(CPeerMemory& memory, Change change) {
    auto changeOnce = [&] { change(*memory.mpSharedMemory); };
    memory.mpSharedMemory->atomic_func(changeOnce);
}

using Vector = SegmentVector<double>;

TEST(DeathAtAnyStore, OfAPlainPeerIsHarmlessOrToldAtOnce) {
    const sCase cases[] = {
        {"construct",
         [](CPeerMemory& m) {
             changeAsPlainPeer(m, [](Segment& segment) {
                 segment.construct<Vector>("OPP_DATA_MEM")(segment.get_segment_manager());
             });
         }},
        {"grow and shrink",
         [](CPeerMemory& m) {
             changeAsPlainPeer(m, [](Segment& segment) {
                 auto* vector = segment.find<Vector>("VOLTAGE_DATA_MEM").first;
                 vector->resize(30, 7.0);
                 vector->resize(1);
                 vector->shrink_to_fit();
             });
         }},
        {"destroy",
         [](CPeerMemory& m) {
             changeAsPlainPeer(
                 m, [](Segment& segment) { segment.destroy<Vector>("VOLTAGE_DATA_MEM"); });
         }},
    };
    std::size_t done = 0, damaged = 0;
    for (const auto& row : cases) {
        createWithValues();
        CPeerMemory memory;
        memory.setDoubleVector(3, {8.0});  // a name as long as OPP_DATA_MEM
        const CStates states(memory.mpSharedMemory->area(), [&] { row.act(memory); });
        states.replay([&](std::size_t i) {
            CPeerSegment segment;
            ASSERT_TRUE(segment.attach()) << row.what << ", store " << i;
            Doubles voltages, others;
            const auto begin = steady_clock::now();
            segment.read(0, voltages);
            const auto read = segment.read(3, others);
            const auto written = segment.write(1, Doubles(9, 1.0));
            ASSERT_LT(steady_clock::now() - begin, 900ms) << row.what << ", store " << i;
            ASSERT_EQ(read ? Doubles{8.0} : Doubles{}, others);
            for (const auto& result : {read, written}) {
                ASSERT_TRUE(result || result.outcome == eOutcome::DAMAGED)
                    << row.what << ", store " << i << ": " << result.reason;
                ++(result ? done : damaged);
            }
        });
    }
    EXPECT_GT(done, damaged);
    EXPECT_GT(damaged, 0U);
}

}  // namespace
