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
using eOutcome = CPeerSegment::eOutcome;
using namespace std::chrono_literals;

volatile sig_atomic_t ended = 0;

bool isDone(const CPeerSegment::sResult& result) {
    if (!result) std::fprintf(stderr, "peer: %s\n", result.reason.c_str());
    return result.outcome == eOutcome::DONE;
}

// Attaches to the segment and puts into it what this process has to say.
bool publish(CPeerSegment& segment, const std::vector<double>& voltages) {
    const std::vector<std::string> identity = {"100_VOLTS_DEV_2CH"};
    return isDone(segment.open()) && isDone(segment.write("VOLTAGE_DATA_MEM", voltages)) &&
           isDone(segment.write("CNF_DEV_TYP_MEM", identity));
}

}  // namespace

int main() {
    for (const int signal : {SIGINT, SIGTERM})
        ::signal(signal, [](int) { ended = 1; });

    std::vector<double> voltages = {24.0, 12.5};  // V; channel 1, channel 2
    CPeerSegment segment;
    if (!publish(segment, voltages)) return 1;

    while (!ended) {
        const auto result = segment.waitForChange("VOLTAGE_DATA_MEM", voltages, 20ms, 500ms);
        if (result.outcome == eOutcome::TIME_OUT) continue;
        if (result.outcome == eOutcome::REPLACED) {  // somebody removed it: carry on in a new one
            if (!publish(segment, voltages)) return 1;
            std::puts("attached again");
        } else if (!isDone(result)) {
            return 1;
        }
        std::printf("voltages:");
        for (const double voltage : voltages)
            std::printf(" %g V", voltage);
        std::puts("");
        std::fflush(stdout);
    }
    std::puts("ended");
}
