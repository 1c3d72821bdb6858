// Finds out from /proc and the kernel whether the thread that holds a lock is alive.
#ifndef SHARED_MEMORY_LOCK_HOLDER_H
#define SHARED_MEMORY_LOCK_HOLDER_H

#include <sys/types.h>

namespace core_utils {

pid_t currentThread();

// True if there is no such thread, if it is a zombie, or if its process has not mapped the memory
// object with the inode number `segment`: its number was then used again. A thread that is stopped,
// or cannot be examined, counts as alive.
//
// A thread in a PID namespace that this process cannot see looks dead.
bool isDead(pid_t thread, ino_t segment);

// False only if the process's memory map can be read and does not contain the memory object.
bool mayHaveMapped(pid_t process, ino_t segment);

}  // namespace core_utils

#endif
