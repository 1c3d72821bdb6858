// A real second process on the segment, as the instrument's other programs are.
#ifndef SUPPORT_PEER_H
#define SUPPORT_PEER_H

#include <functional>

#include "shared_memory/mutex_words.h"
#include "shared_memory/shared_memory.h"
#include "support/child_process.h"

namespace support {

constexpr char SEGMENT_FILE[] = "/dev/shm/CONF_AUTO_SAVE_MEM";

using Doubles = std::vector<double>;
using Bytes = std::vector<unsigned char>;
using Texts = std::vector<std::string>;

// An attachment to the segment that treats objects as it likes.
struct CPeerMemory : core_utils::CSharedMemory {
    CPeerMemory() : CSharedMemory(false) {}
    using CSharedMemory::mpSharedMemory;

    template <typename Element>
    core_utils::SegmentVector<Element>& vector(const char* name) {
        return *mpSharedMemory->find<core_utils::SegmentVector<Element>>(name).first;
    }
};

inline bool isLocked(const pthread_mutex_t& lock) {
    return core_utils::sMutexWords<pthread_mutex_t>::holderOf(lock).isLocked;
}

// Forks at once, so that the test can start threads afterwards; attaches when it is told to act.
// An action that hangs is ended by SIGALRM.
class CPeer {
  public:
    explicit CPeer(const std::function<bool(CPeerMemory&)>& action) {
        if (pipe(mEnds) != 0 || (mPid = fork()) < 0) throw std::runtime_error("no peer");
        if (mPid != 0) return;
        ::close(mEnds[1]);
        char word = 0;
        if (read(mEnds[0], &word, 1) != 1) _exit(1);
        alarm(20);
        CPeerMemory memory;
        _exit(action(memory) ? 0 : 1);
    }

    CPeer(const CPeer&) = delete;
    CPeer& operator=(const CPeer&) = delete;
    ~CPeer() {
        ::close(mEnds[0]);
        ::close(mEnds[1]);
    }

    pid_t pid() const { return mPid; }

    void start() {
        if (write(mEnds[1], "", 1) != 1) throw std::runtime_error("no peer");
    }

    // 0 if the action returned true, minus the signal's number if one ended it.
    int wait() { return statusOf(mPid); }

    int run() {
        start();
        return wait();
    }

  private:
    int mEnds[2] = {};
    pid_t mPid = 0;
};

// For a peer: what a plain one of Boost does that gets the signal while it holds the segment's
// lock.
inline std::function<bool(CPeerMemory&)> raiseUnderLock(int signal) {
    return [signal](CPeerMemory& memory) {
        auto act = [signal] { raise(signal); };
        memory.mpSharedMemory->atomic_func(act);
        return true;
    };
}

}  // namespace support

#endif
