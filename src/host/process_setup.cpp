#include "host/process_setup.h"

#include <fcntl.h>
#include <signal.h>
#include <unistd.h>

#include <cstdio>

void setUpProcess() {
    // A configuration file that got one of these numbers would get the printed lines too. open()
    // takes the lowest free number, so the first one above them says that none is left.
    int descriptor = 0;
    do {
        descriptor = open("/dev/null", O_RDWR);
    } while (descriptor >= 0 && descriptor <= STDERR_FILENO);
    if (descriptor >= 0) close(descriptor);

    signal(SIGPIPE, SIG_IGN);
    signal(SIGHUP, SIG_IGN);

    // Standard output is a pipe or a log file on a board and this process never exits: a line
    // that waited in a full buffer would be lost.
    std::setvbuf(stdout, nullptr, _IOLBF, BUFSIZ);
}
