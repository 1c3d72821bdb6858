// Lets the process end between two pieces of work, not within one.
#ifndef FRAMEWORK_EXIT_GATE_H
#define FRAMEWORK_EXIT_GATE_H

#include <atomic>
#include <chrono>

namespace core_utils {

// The one gate of the process, for work that must not be interrupted: a change of a file or an
// access of the shared segment. While nobody closes it, a piece of work costs two atomic
// operations.
class CExitGate {
  public:
    // A piece of work, which lasts as long as the object. Any thread may create one, but not inside
    // another one of the same thread. After close() the constructor never returns.
    class CWork {
      public:
        CWork() { enter(); }
        CWork(const CWork&) = delete;
        CWork& operator=(const CWork&) = delete;
        ~CWork() { leave(); }

        // Call it while nothing has been changed yet: a pending close() takes effect here.
        void renew() {
            leave();
            enter();
        }
    };

    // Lets no more work begin and waits for the work in progress. Returns true when all of it has
    // ended, or false after `limit`. The caller must then end the process.
    static bool close(std::chrono::milliseconds limit);

  private:
    static constexpr unsigned CLOSED = 0x80000000U;

    static void enter() {
        if ((mState.fetch_add(1) & CLOSED) != 0) park();
    }
    static void leave() { mState.fetch_sub(1); }
    [[noreturn]] static void park();

    // CLOSED, plus the number of CWork objects.
    static inline std::atomic<unsigned> mState{0};
};

}  // namespace core_utils

#endif
