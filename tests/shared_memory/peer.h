// A real second process on the segment, as the instrument's other programs are.
#ifndef SHARED_MEMORY_PEER_H
#define SHARED_MEMORY_PEER_H

#include <sys/mount.h>
#include <sys/wait.h>
#include <unistd.h>

#include <functional>
#include <stdexcept>
#include <string>
#include <utility>

#include "shared_memory/shared_memory.h"

namespace support {

// Its own attachment to the segment, with what a program needs that treats objects as it likes.
class CPeerMemory : public core_utils::CSharedMemory {
  public:
    CPeerMemory() : CSharedMemory(false) {}
    using CSharedMemory::mpSharedMemory;
};

// Forks at once, so that the test can start threads afterwards, and attaches when it is told to
// act. Its result is 0 if `action` returned true, minus a signal's number if that ended it.
class CPeer {
  public:
    explicit CPeer(const std::function<bool(CPeerMemory&)>& action) {
        if (pipe(mEnds) != 0 || (mPid = fork()) < 0) throw std::runtime_error("no peer");
        ::close(mEnds[mPid == 0 ? 1 : 0]);
        if (mPid != 0) return;
        char word = 0;
        if (read(mEnds[0], &word, 1) != 1) _exit(2);
        CPeerMemory memory;
        _exit(action(memory) ? 0 : 1);
    }
    CPeer(const CPeer&) = delete;
    CPeer& operator=(const CPeer&) = delete;
    ~CPeer() { finish(); }

    int run() {
        if (write(mEnds[1], "", 1) != 1) return 3;
        return finish();
    }

  private:
    int finish() {
        if (mPid == 0) return mResult;
        ::close(mEnds[1]);
        int status = 0;
        waitpid(std::exchange(mPid, 0), &status, 0);
        return mResult = WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
    }

    int mEnds[2] = {};
    pid_t mPid = 0;
    int mResult = 4;
};

// Hides `folder` behind a file system of that many bytes; for the rest of the process, since
// every test has its own.
inline bool mountSmall(const std::string& folder, const std::string& size) {
    return mount("tmpfs", folder.c_str(), "tmpfs", 0, ("size=" + size).c_str()) == 0;
}

}  // namespace support

#endif
