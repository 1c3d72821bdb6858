// What this process settles with the system before its own work begins.
#ifndef HOST_PROCESS_SETUP_H
#define HOST_PROCESS_SETUP_H

// For main(), before anything opens a file, prints or starts a thread. Afterwards:
// - Each standard descriptor that the starter had closed is /dev/null.
// - The process outlives the reader of its log (SIGPIPE) and its terminal (SIGHUP): the lines are
//   lost, the settings are not. Every other signal does what the system does by itself.
// - Each printed line leaves at once.
void setUpProcess();

#endif
