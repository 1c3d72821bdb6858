#include "shared_memory/lock_holder.h"

#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <fstream>
#include <string>

namespace core_utils {

namespace {

std::string processFile(pid_t process, const char* name) {
    return "/proc/" + std::to_string(process) + '/' + name;
}

// The state follows the program's name, which may contain any characters.
char stateOf(pid_t thread) {
    std::ifstream file(processFile(thread, "stat"));
    std::string line;
    std::getline(file, line);
    const std::size_t name = line.rfind(") ");
    return name != std::string::npos && name + 2 < line.size() ? line[name + 2] : '?';
}

}  // namespace

pid_t currentThread() {
    return static_cast<pid_t>(syscall(SYS_gettid));
}

bool mayHaveMapped(pid_t process, ino_t segment) {
    std::ifstream map(processFile(process, "maps"));
    std::string line;
    bool isEmpty = true;
    while (std::getline(map, line)) {
        isEmpty = false;
        unsigned long long object = 0;
        const int read = std::sscanf(line.c_str(), "%*s %*s %*s %*s %llu", &object);
        if (read == 1 && object == segment) return true;
    }
    return isEmpty || map.bad();
}

bool isDead(pid_t thread, ino_t segment) {
    if (syscall(SYS_tkill, thread, 0) != 0 && errno == ESRCH) return true;
    const char state = stateOf(thread);
    return state == 'Z' || state == 'X' || !mayHaveMapped(thread, segment);
}

}  // namespace core_utils
