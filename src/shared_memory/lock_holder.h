// Whether the thread that holds a lock still lives, as /proc and the kernel tell it.
#ifndef SHARED_MEMORY_LOCK_HOLDER_H
#define SHARED_MEMORY_LOCK_HOLDER_H

#include <sys/types.h>

namespace core_utils {

pid_t currentThread();

// True if there is no such thread, if it has ended and nobody has asked for its status yet, or if
// its process has not mapped the memory object `segment`: then its number was used again. What
// cannot be found out counts as alive; so does a stopped thread.
//
// A thread of a process that this one cannot see, in a PID namespace beside or above, looks dead.
bool isDead(pid_t thread, ino_t segment);

// False only if the process's map can be read and does not have the memory object.
bool mayHaveMapped(pid_t process, ino_t segment);

}  // namespace core_utils

#endif
