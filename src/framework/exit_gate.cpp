#include "framework/exit_gate.h"

#include <unistd.h>

#include <thread>

namespace core_utils {

bool CExitGate::close(std::chrono::milliseconds limit) {
    const auto end = std::chrono::steady_clock::now() + limit;
    mState.fetch_or(CLOSED);
    while (mState != CLOSED) {
        if (std::chrono::steady_clock::now() >= end) return false;
        std::this_thread::sleep_for(std::chrono::microseconds(100));
    }
    return true;
}

void CExitGate::park() {
    leave();
    while (true)
        pause();
}

}  // namespace core_utils
