// A process beside the configuration daemon: says which instrument this is, sets the voltages, and
// shows what others make of them until it is asked to end.
#include <shared_memory/peer_segment.h>
#include <signal.h>

#include <chrono>
#include <cstdio>
#include <string>
#include <vector>

namespace {

using core_utils::CPeerSegment;
using namespace std::chrono_literals;

volatile sig_atomic_t ended = 0;

bool isDone(const CPeerSegment::sResult& result) {
    if (!result) std::fprintf(stderr, "peer: %s\n", result.reason.c_str());
    return result.outcome == CPeerSegment::eOutcome::DONE;
}

}  // namespace

int main() {
    for (const int signal : {SIGINT, SIGTERM})
        ::signal(signal, [](int) { ended = 1; });

    const std::vector<std::string> identity = {"100_VOLTS_DEV_2CH"};
    std::vector<double> voltages = {24.0, 12.5};  // V; channel 1, channel 2
    CPeerSegment segment;
    const bool ready = isDone(segment.open()) &&
                       isDone(segment.write("CNF_DEV_TYP_MEM", identity)) &&
                       isDone(segment.write("VOLTAGE_DATA_MEM", voltages));
    if (!ready) return 1;

    while (!ended) {
        const auto result = segment.waitForChange("VOLTAGE_DATA_MEM", voltages, 20ms, 500ms);
        if (result.outcome == CPeerSegment::eOutcome::TIME_OUT) continue;
        if (!isDone(result)) return 1;
        std::printf("voltages:");
        for (const double voltage : voltages)
            std::printf(" %g V", voltage);
        std::puts("");
        std::fflush(stdout);
    }
    std::puts("ended");
}
