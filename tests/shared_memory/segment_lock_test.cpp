#include <gtest/gtest.h>

#include <atomic>
#include <future>
#include <thread>

#include "framework/exit_gate.h"
#include "support/peer.h"

namespace {

using namespace support;
using std::chrono::milliseconds;

TEST(SegmentLock, TheEndWaitsForTheAccessUnderWayAndLetsNoOtherBegin) {
    static CPeerMemory memory;
    static std::atomic<bool> begun{false}, passed{false};
    std::promise<void> last;
    std::thread running([&] {
        core_utils::withSegmentLock(*memory.mpSharedMemory, [&] {
            begun = true;
            last.get_future().wait();
            return true;
        });
    });
    while (!begun)
        std::this_thread::yield();
    EXPECT_FALSE(core_utils::CExitGate::close(milliseconds(20)));
    auto closing = std::async(std::launch::async, core_utils::CExitGate::close, milliseconds(9999));
    std::thread([] {
        memory.getDoubleVector(0);
        passed = true;
    }).detach();
    EXPECT_EQ(std::future_status::timeout, closing.wait_for(milliseconds(50)));
    last.set_value();
    EXPECT_TRUE(closing.get());
    running.join();
    std::this_thread::sleep_for(milliseconds(20));
    EXPECT_FALSE(passed);
}

// A page of the copy stays as it was when the copy first wrote there.
TEST(SegmentChange, KeepsWhatAPlainPeerWritesMeanwhileWithoutALock) {
    CPeerMemory memory;
    memory.setDoubleVector(0, {1.0});
    auto& segment = *memory.mpSharedMemory;
    double* value =
        segment.find<core_utils::SegmentVector<double>>("VOLTAGE_DATA_MEM").first->data();
    core_utils::withSegmentLock(segment, [&] {
        return core_utils::changeStructure(segment, [&](const core_utils::CPrivateCopy& copy) {
            const auto offset = segment.area().offsetOf(value);
            *reinterpret_cast<volatile double*>(copy.area().base + offset) = 1.0;
            *value = 2.0;
            return true;
        });
    });
    EXPECT_EQ(Doubles{2.0}, memory.getDoubleVector(0));
}

}  // namespace
