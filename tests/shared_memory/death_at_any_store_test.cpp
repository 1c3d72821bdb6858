// Nobody's death stops the others. A death is tried at every store that other processes can see: a
// child writes down each state of the segment that it brings about, and each is put back when it is
// dead.
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/mman.h>
#include <ucontext.h>

#include <chrono>
#include <cstring>

#include "shared_memory/peer_segment.h"
#include "support/peer.h"

namespace {

using namespace support;
using namespace std::chrono_literals;
using core_utils::CPeerSegment;
using core_utils::sArea;
using core_utils::Segment;
using std::chrono::steady_clock;
using Vector = core_utils::SegmentVector<double>;

constexpr std::size_t SIZE = 0x8000;  // of the segment, bytes
constexpr std::size_t MOST_STATES = 4000;

// Every state of the segment on the way through an action of a process that has ended afterwards.
class CStates {
  public:
    CStates(const sArea& area, const std::function<void()>& action) : mArea(area) {
        mLog = static_cast<sLog*>(
            mmap(nullptr, sizeof(sLog), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0));
        const pid_t child = fork();
        if (child == 0) {
            alarm(20);
            recorder = this;
            handle(SIGSEGV, beforeStore);
            handle(SIGTRAP, afterStore);
            protect(PROT_READ);
            action();
            _exit(0);
        }
        EXPECT_EQ(0, statusOf(child));
        EXPECT_GT(mLog->count, 1U);
    }
    ~CStates() { munmap(mLog, sizeof(sLog)); }

    std::size_t count() const { return mLog->count; }
    void putBack(std::size_t number) const { std::memcpy(mArea.base, mLog->states[number], SIZE); }

  private:
    static constexpr greg_t TRAP_FLAG = 0x100;

    struct sLog {
        std::size_t count;
        unsigned char states[MOST_STATES][SIZE];
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
        static_cast<ucontext_t*>(context)->uc_mcontext.gregs[REG_EFL] &= ~TRAP_FLAG;
        recorder->protect(PROT_READ);
        recorder->record();
    }

    void protect(int access) const { mprotect(mArea.base, SIZE, access); }

    // A store of what stands there already is no new state.
    void record() {
        const std::size_t count = mLog->count;
        if (count > 0 && std::memcmp(mLog->states[count - 1], mArea.base, SIZE) == 0) return;
        if (count == MOST_STATES) _exit(1);
        std::memcpy(mLog->states[count], mArea.base, SIZE);
        ++mLog->count;
    }

    static CStates* recorder;
    const sArea mArea;
    sLog* mLog;
};
CStates* CStates::recorder = nullptr;

struct sCase {
    const char* what;
    std::function<void(CPeerMemory&)> act;
    std::function<void(CPeerMemory&)> prepare = [](CPeerMemory&) {};
};

auto valuesOf(CPeerMemory& memory) {
    return std::tuple(memory.getStringVector(24), memory.getDoubleVector(0),
                      memory.getDoubleVector(1));
}
using Values = decltype(valuesOf(std::declval<CPeerMemory&>()));

// Others wait long for a lock without a name, which is tested by itself.
bool isNameless(const pthread_mutex_t& lock) {
    const auto holder = core_utils::sMutexWords<pthread_mutex_t>::holderOf(lock);
    return holder.isLocked && holder.thread == 0;
}

// Calls `judge` with the old values and the new ones after each death, until one fails.
template <std::size_t COUNT, typename Judge>
void dieAtEveryStore(const sCase (&cases)[COUNT], Judge judge) {
    for (const auto& [what, act, prepare] : cases) {
        unlink(SEGMENT_FILE);
        Segment(boost::interprocess::create_only, core_utils::SEGMENT_NAME, SIZE);
        CPeerMemory memory;
        memory.setStringVector(24, {"short", std::string(40, 'l')});
        memory.setDoubleVector(0, {1.0, 2.0});
        memory.setByteVector(7, {1});
        memory.setDoubleVector(3, {8.0});  // a name as long as OPP_DATA_MEM
        const Values before = valuesOf(memory);
        prepare(memory);
        const Segment& segment = *memory.mpSharedMemory;
        const CStates states(segment.area(), [&, &action = act] { action(memory); });
        const Values after = valuesOf(memory);
        for (std::size_t i = 0; i < states.count() && !testing::Test::HasFailure(); ++i) {
            SCOPED_TRACE(what + (", store " + std::to_string(i)));
            states.putBack(i);
            if (!isNameless(segment.lock()) && !isNameless(segment.heapLock()))
                judge(memory, before, after);
        }
    }
}

TEST(DeathAtAnyStore, OfOursLeavesTheOldVectorsOrTheNewOnes) {
    const Texts texts = {std::string(60, 'n'), "", "x"};
    const Doubles pair = {3.0, 4.0}, one = {6.0};
    const auto construct = [&](CPeerMemory& m) { m.setDoubleVector(1, one); };
    const auto remove = [](CPeerMemory& m) {
        core_utils::CVectorAccess<std::string>::destroy(*m.mpSharedMemory, "WLAN_SSID_MEM");
    };
    const auto loseJournal = [](CPeerMemory& m) {
        std::memset(m.mpSharedMemory->area().base + 4, 0, 4);
    };
    const auto leaveLocked = [](CPeerMemory&) { CPeer(raiseUnderLock(SIGKILL)).run(); };
    const sCase cases[] = {
        {"same size", [&](CPeerMemory& m) { m.setDoubleVector(0, pair); }},
        {"texts", [&](CPeerMemory& m) { m.setStringVector(24, texts); }},
        {"construct", construct},
        {"first journal", construct, loseJournal},
        {"remove", remove},
        {"recover", [](CPeerMemory& m) { m.getStringVector(24); }, leaveLocked},
    };
    dieAtEveryStore(cases, [](CPeerMemory& memory, const Values& before, const Values& after) {
        const Values now = valuesOf(memory);
        EXPECT_TRUE(now == before || now == after);
        EXPECT_TRUE(memory.setDoubleVector(2, Doubles(9, 1.0)));
        EXPECT_TRUE(memory.mpSharedMemory->check_sanity());
    });
}

// What a plain peer of Boost does with the lock.
template <typename Change>
auto asPlainPeer(Change change) {
    return [change](CPeerMemory& memory) {
        auto changeOnce = [&] { change(*memory.mpSharedMemory); };
        memory.mpSharedMemory->atomic_func(changeOnce);
    };
}

TEST(DeathAtAnyStore, OfAPlainPeerIsHarmlessOrToldAtOnce) {
    const auto construct = [](Segment& segment) {
        segment.construct<Vector>("OPP_DATA_MEM")(segment.get_segment_manager());
    };
    const auto growAndShrink = [](Segment& segment) {
        auto* vector = segment.find<Vector>("VOLTAGE_DATA_MEM").first;
        vector->resize(30, 7.0);
        vector->resize(1);
        vector->shrink_to_fit();
    };
    const auto destroy = [](Segment& segment) { segment.destroy<Vector>("VOLTAGE_DATA_MEM"); };
    const sCase cases[] = {{"construct", asPlainPeer(construct)},
                           {"grow and shrink", asPlainPeer(growAndShrink)},
                           {"destroy", asPlainPeer(destroy)}};
    std::size_t done = 0, damaged = 0;
    dieAtEveryStore(cases, [&](CPeerMemory&, const Values&, const Values&) {
        CPeerSegment segment;
        EXPECT_TRUE(segment.attach());
        Doubles voltages, others;
        const auto begin = steady_clock::now();
        segment.read(0, voltages);
        const auto read = segment.read(3, others);
        const auto written = segment.write(1, Doubles(9, 1.0));
        EXPECT_LT(steady_clock::now() - begin, 900ms);
        EXPECT_EQ(read ? Doubles{8.0} : Doubles{}, others);
        for (const auto& result : {read, written}) {
            EXPECT_TRUE(result || result.outcome == CPeerSegment::eOutcome::DAMAGED)
                << result.reason;
            ++(result ? done : damaged);
        }
    });
    EXPECT_GT(done, damaged);
    EXPECT_GT(damaged, 0U);
}

}  // namespace
