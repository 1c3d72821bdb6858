// The same process as peer.cpp, in C, on the shared library.
#include <shared_memory/peer_segment_c.h>
#include <signal.h>
#include <stdio.h>

static volatile sig_atomic_t ended = 0;

static void end(int signal) {
    (void)signal;
    ended = 1;
}

static int isDone(int outcome) {
    if (outcome != PEER_SEGMENT_DONE) fprintf(stderr, "peer: %s\n", peer_segment_error());
    return outcome == PEER_SEGMENT_DONE;
}

// Attaches to the segment and puts into it what this process has to say.
static int publish(peer_segment** segment, const double* voltages, size_t count) {
    const char* const identity[] = {"100_VOLTS_DEV_2CH"};
    peer_segment_close(*segment);
    return isDone(peer_segment_open(segment, PEER_SEGMENT_CREATE)) &&
           isDone(peer_segment_write_doubles(*segment, "VOLTAGE_DATA_MEM", voltages, count)) &&
           isDone(peer_segment_write_texts(*segment, "CNF_DEV_TYP_MEM", identity, 1));
}

int main(void) {
    signal(SIGINT, end);
    signal(SIGTERM, end);
    double voltages[2] = {24.0, 12.5};  // V; channel 1, channel 2
    size_t count = 2;
    peer_segment* segment = NULL;
    if (!publish(&segment, voltages, count)) return 1;

    while (!ended) {
        const int outcome =
            peer_segment_wait_doubles(segment, "VOLTAGE_DATA_MEM", voltages, &count, 2, 20, 500);
        if (outcome == PEER_SEGMENT_TIME_OUT) continue;
        if (outcome == PEER_SEGMENT_REPLACED) {  // somebody removed it: carry on in a new one
            if (!publish(&segment, voltages, count)) return 1;
            puts("attached again");
        } else if (!isDone(outcome)) {
            return 1;
        }
        printf("voltages:");
        for (size_t i = 0; i < count; ++i)
            printf(" %g V", voltages[i]);
        puts("");
        fflush(stdout);
    }
    peer_segment_close(segment);
    puts("ended");
    return 0;
}
