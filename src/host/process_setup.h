// What a process settles with the system before its own work begins.
#ifndef HOST_PROCESS_SETUP_H
#define HOST_PROCESS_SETUP_H

// Opens /dev/null with `flags`, as open() takes them, in the place of each standard descriptor that
// the starter of the process has closed. Otherwise a file or segment that is opened later would get
// its number, and the printed lines.
void fillStandardDescriptors(int flags);

// For main(), before anything opens a file, prints or starts a thread, which must all leave SIGTERM
// and SIGINT blocked as they inherit them. Afterwards:
// - Each standard descriptor that the starter had closed is /dev/null.
// - The process outlives the reader of its log (SIGPIPE) and its terminal (SIGHUP): the lines are
//   lost, the settings are not. Every other signal does what the system does by itself.
// - SIGTERM and SIGINT end the process as they do by themselves, but not in the middle of a change
//   of a file or of an access of the segment, unless that takes more than 200 ms.
// - Each printed line leaves at once.
void setUpProcess();

#endif
