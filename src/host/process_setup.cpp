#include "host/process_setup.h"

#include <fcntl.h>
#include <signal.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <system_error>
#include <thread>

#include "framework/exit_gate.h"

namespace {

[[noreturn]] void endWhenAsked(const sigset_t& signals) {
    int number = 0;
    while (sigwait(&signals, &number) != 0) {
    }
    core_utils::CExitGate::close(std::chrono::milliseconds(200));
    // By that signal, as whoever sent it expects.
    pthread_sigmask(SIG_UNBLOCK, &signals, nullptr);
    raise(number);
    _exit(128 + number);  // the first process of a container: no signal ends it by itself
}

void holdBackTheEnd() {
    sigset_t signals;
    sigemptyset(&signals);
    for (const int number : {SIGTERM, SIGINT}) {
        struct sigaction action {};
        // A shell has its background programs ignore SIGINT.
        if (sigaction(number, nullptr, &action) == 0 && action.sa_handler != SIG_IGN) {
            sigaddset(&signals, number);
        }
    }
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);  // here and in all threads to come
    try {
        std::thread([signals] { endWhenAsked(signals); }).detach();
    } catch (const std::system_error&) {
        pthread_sigmask(SIG_UNBLOCK, &signals, nullptr);
    }
}

}  // namespace

// open() takes the lowest free number, so the first one above the standard ones says that none of
// these is left.
void fillStandardDescriptors(int flags) {
    int descriptor = 0;
    do {
        descriptor = open("/dev/null", flags);
    } while (descriptor >= 0 && descriptor <= STDERR_FILENO);
    if (descriptor >= 0) close(descriptor);
}

void setUpProcess() {
    fillStandardDescriptors(O_RDWR);
    signal(SIGPIPE, SIG_IGN);
    signal(SIGHUP, SIG_IGN);

    // Standard output is a pipe or a log file on a board and this process never exits: a line
    // that waited in a full buffer would be lost.
    std::setvbuf(stdout, nullptr, _IOLBF, BUFSIZ);

    holdBackTheEnd();
}
