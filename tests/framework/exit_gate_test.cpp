#include "framework/exit_gate.h"

#include <gtest/gtest.h>

#include <optional>
#include <thread>

namespace {

using core_utils::CExitGate;
using namespace std::chrono_literals;

std::atomic<bool> begun{false};

TEST(ExitGate, WaitsForWorkThatHasBegunAndLetsNoMoreBegin) {
    std::optional<CExitGate::CWork> work(std::in_place);
    EXPECT_FALSE(CExitGate::close(1ms));
    std::thread([] {
        const CExitGate::CWork late;
        begun = true;
    }).detach();
    std::this_thread::sleep_for(20ms);
    work.reset();
    EXPECT_TRUE(CExitGate::close(5s));
    EXPECT_FALSE(begun);
}

}  // namespace
