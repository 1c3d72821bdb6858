// Processes that are killed at random moments while others use the segment. APP_CONFIG_KILLS sets
// how many of each kind, APP_CONFIG_SEED repeats a run as far as the scheduler does.
#include <gtest/gtest.h>
#include <sys/mman.h>

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <ctime>
#include <random>
#include <thread>

#include "host/app_config_manager.h"
#include "host/process_setup.h"
#include "shared_memory/peer_segment.h"
#include "support/files.h"
#include "support/peer.h"

namespace {

using namespace support;
using core_utils::CPeerSegment;
using sResult = CPeerSegment::sResult;

// What the texts are in turn: of changing number and length, and so long that a writer is within an
// access most of the time.
Texts textsOf(unsigned turn) {
    return Texts(1 + turn * 3 % 40, std::string(1 + turn % 90, "abcdefg"[turn % 7]));
}

// The turn that was begun last, in memory that all processes share.
std::atomic<unsigned>& turn() {
    static void* const memory =
        mmap(nullptr, 4096, PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    return *static_cast<std::atomic<unsigned>*>(memory);
}

constexpr int JUDGED = 30;  // the only texts that the daemon leaves alone

sResult writeNext(CPeerSegment& segment) {
    return segment.write(JUDGED, textsOf(++turn()));
}

void beWriter() {
    CPeerSegment segment;
    for (segment.open();;)
        writeNext(segment);
}

void beReader() {
    CPeerSegment segment;
    Texts texts;
    for (segment.open();;)
        segment.read(JUDGED, texts);
}

// Constructs, grows, shrinks and destroys: objects of the directory under the lock, otherwise
// vectors of its own, as a dead one's may point to what was freed, where its successor would write.
void beBoostPeer() {
    namespace bip = boost::interprocess;
    using Vector = core_utils::SegmentVector<double>;
    const std::string own = "PEER_" + std::to_string(getpid()) + '_';
    bip::managed_shared_memory segment(bip::open_only, core_utils::SEGMENT_NAME);
    for (unsigned step = 0;; ++step) {
        const auto change = [&](const std::string& name) {
            auto* vector =
                segment.find_or_construct<Vector>(name.c_str())(segment.get_segment_manager());
            vector->resize(step * 37 % 400);
            vector->shrink_to_fit();
            if (step % 3 == 0) segment.destroy<Vector>(name.c_str());
        };
        const std::string name = core_utils::OBJECT_DIRECTORY[1 + step * 7 % 5].name;
        auto changeShared = [&] { change(name); };
        segment.atomic_func(changeShared);
        change(own + name);
    }
}

// Knows its identity, seeds its items and follows them.
void beDaemon() {
    writeFile(configPath("conf_auto_save.cfg"), "[CONF_STATUS]\nSTATE=0\n");
    writeFile(configPath("conf_preset.cfg"), "");
    writeFile(configPath("devtype_info.cfg"),
              "[PROCESSED_DEV_INFORMATION]\nDEV_INFORMATION=35_VOLTS_DEV_2CH\n");
    setUpProcess();
    auto* registry = new CAppConfigManager({eHandler::AUTO_SAVE, eHandler::PRESET, eHandler::SYSTEM,
                                            eHandler::DEV_TYPE, eHandler::DEV_VAR_SYSTEM});
    if (registry->init()) registry->start();
    while (true)
        pause();
}

struct sKind {
    const char* name;
    void (*be)();
    bool isOurs;
    int longestLife;  // us
};
constexpr sKind KINDS[] = {{"Writer", beWriter, true, 4000},
                           {"BoostPeer", beBoostPeer, false, 4000},
                           {"Daemon", beDaemon, true, 60000}};

pid_t start(void (*be)()) {
    std::fflush(stdout);  // or the child writes it too
    const pid_t process = fork();
    if (process != 0) return process;
    for (std::FILE* stream : {stdout, stderr})
        if (std::freopen("/dev/null", "w", stream) == nullptr) _exit(1);
    try {
        be();
    } catch (...) {
    }
    _exit(1);
}

class CJudge {
  public:
    explicit CJudge(const sKind& kind) : mKind(kind) { startAnew(); }

    void killOne(std::mt19937& random) {
        const pid_t victim = start(mKind.be);
        // Dies too, perhaps while it repairs what the other has left.
        const pid_t bystander = start(beReader);
        const bool isDaemon = mKind.be == beDaemon;
        for (int left = static_cast<int>(random() % 999'983) % mKind.longestLife; left > 0;) {
            std::this_thread::sleep_for(std::chrono::microseconds(std::min(left, 1000)));
            // May fail while all live: on a busy machine a holder may stand still for a second.
            if (isDaemon) mSegment.write(0, Doubles(2, left));
            left -= 1000;
        }
        kill(victim, isDaemon && random() % 2 == 0 ? SIGTERM : SIGKILL);
        // It is not asked for its status before the others have gone on.
        siginfo_t end{};
        waitid(P_PID, static_cast<id_t>(victim), &end, WEXITED | WNOWAIT);
        std::this_thread::sleep_for(std::chrono::microseconds(random() % 6000));
        kill(bystander, SIGKILL);
        const bool isWhole = judge();
        statusOf(victim);
        statusOf(bystander);
        // It has given up: the segment is full of what dead peers have left.
        const bool isEarly = end.si_code == CLD_EXITED;
        early += isEarly;
        if (!isWhole || isEarly) startAnew();
    }

    unsigned early = 0, frozen = 0, damaged = 0, wrong = 0;

  private:
    void startAnew() {
        unlink(SEGMENT_FILE);
        if (works(mSegment.open())) works(writeNext(mSegment));
    }

    bool works(const sResult& result) {
        if (result) return true;
        ++(result.outcome == CPeerSegment::eOutcome::LOCKED ? frozen : damaged);
        std::printf("%s\n", result.reason.c_str());
        return false;
    }

    bool judge() {
        Texts texts;
        if (!works(mSegment.read(JUDGED, texts))) return false;
        // Of its turns a writer may have finished the last one or not.
        const bool isOld = mKind.be == beWriter && texts == textsOf(turn() - 1);
        wrong += !isOld && texts != textsOf(turn());
        return works(writeNext(mSegment));
    }

    const sKind mKind;
    CPeerSegment mSegment;
};

unsigned numberFrom(const char* variable, unsigned otherwise) {
    const char* text = std::getenv(variable);
    return text != nullptr ? static_cast<unsigned>(std::strtoul(text, nullptr, 10)) : otherwise;
}

TEST(RandomKills, FreezeNobodyAndLeaveTheOldValuesOrTheNewOnes) {
    const unsigned kills = numberFrom("APP_CONFIG_KILLS", 60);
    const unsigned seed = numberFrom("APP_CONFIG_SEED", static_cast<unsigned>(std::time(nullptr)));
    std::mt19937 random(seed);
    for (const sKind& kind : KINDS) {
        CJudge judge(kind);
        for (unsigned number = 0; number < kills; ++number)
            judge.killOne(random);
        std::printf("%s: %u kills, seed %u: %u early, %u frozen, %u damaged, %u wrong\n", kind.name,
                    kills, seed, judge.early, judge.frozen, judge.damaged, judge.wrong);
        EXPECT_LE(judge.early, kills / 10) << kind.name;
        EXPECT_EQ(0U, judge.frozen + judge.wrong) << kind.name;
        // A Boost peer may die half-way through a change of the heap.
        EXPECT_TRUE(judge.damaged == 0 || !kind.isOurs) << kind.name;
    }
}

}  // namespace
