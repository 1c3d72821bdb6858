// Holds back the end of the process until nothing is half done.
#ifndef FRAMEWORK_EXIT_GATE_H
#define FRAMEWORK_EXIT_GATE_H

#include <atomic>
#include <chrono>

namespace core_utils {

// One gate a process, for work that must not be cut in two: a change of a file, an access of the
// shared segment. Nobody has to close it; passing it costs two atomic operations.
class CExitGate {
  public:
    // Such work, for as long as it lasts. On any thread, and never within another on the same one.
    // Behind a closed gate construction does not return.
    class CWork {
      public:
        CWork() { enter(); }
        CWork(const CWork&) = delete;
        CWork& operator=(const CWork&) = delete;
        ~CWork() { leave(); }

        // While nothing is half done yet: out and in again, so that the end need not wait.
        void renew() {
            leave();
            enter();
        }
    };

    // Lets nobody in any more, then waits for those who are inside: true once all are out, false
    // after `limit`. The caller has to end the process.
    static bool close(std::chrono::milliseconds limit);

  private:
    static constexpr unsigned CLOSED = 0x80000000U;  // beside it, how many are inside

    static void enter() {
        if ((mState.fetch_add(1) & CLOSED) != 0) park();
    }
    static void leave() { mState.fetch_sub(1); }
    [[noreturn]] static void park();

    static inline std::atomic<unsigned> mState{0};
};

}  // namespace core_utils

#endif
