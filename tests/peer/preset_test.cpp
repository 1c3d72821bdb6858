#include "peer/preset.h"

#include <gtest/gtest.h>

#include "support/peer.h"

namespace {

using namespace support;
using core_utils::CPeerSegment;
using eOutcome = CPeerSegment::eOutcome;

TEST(Preset, IsReadAndChangedByNameWhereTheDaemonKeepsIt) {
    CPeerSegment segment;
    ASSERT_TRUE(segment.open());
    hxl_config_handler::sPresetBlock block{};
    EXPECT_EQ(eOutcome::NO_OBJECT, core_utils::readPreset(segment, 3, block).outcome);
    block.fCurrentSet[1] = 1.5F;
    block.ucChnConnMode[0] = 2;
    ASSERT_TRUE(core_utils::writePreset(segment, 3, block));
    CPeerMemory memory;
    Doubles numbers(16);
    numbers[3] = 1.5;
    EXPECT_EQ(numbers, memory.getDoubleVector(36));
    Bytes states(18);
    states[16] = 2;
    EXPECT_EQ(states, memory.getByteVector(37));

    EXPECT_TRUE(core_utils::setPreset(segment, 3, "VoltageSet", 1, 5.5));
    EXPECT_TRUE(core_utils::setPreset(segment, 3, "FuseState", 2, 1));
    ASSERT_TRUE(core_utils::readPreset(segment, 3, block));
    EXPECT_EQ(5.5F, block.fVoltageSet[0]);
    EXPECT_EQ(1.5F, block.fCurrentSet[1]);
    EXPECT_EQ(1, block.ucFuseState[1]);
    EXPECT_EQ(2, block.ucChnConnMode[0]);
}

TEST(Preset, NamesWhatItDoesNotHave) {
    CPeerSegment segment;
    ASSERT_TRUE(segment.open());
    hxl_config_handler::sPresetBlock block{};
    EXPECT_EQ("there is no preset memory 6", core_utils::readPreset(segment, 6, block).reason);
    EXPECT_EQ(eOutcome::UNKNOWN_OBJECT, core_utils::writePreset(segment, 0, block).outcome);
    ASSERT_TRUE(core_utils::writePreset(segment, 1, block));
    const auto reason = [&](int number, const char* key, int channel, double value) {
        return core_utils::setPreset(segment, number, key, channel, value).reason;
    };
    EXPECT_EQ("there is no preset memory 6", reason(6, "VoltageSet", 1, 1));
    EXPECT_EQ("a preset has no setting \"Voltage\"", reason(1, "Voltage", 1, 1));
    for (const int channel : {0, 3})
        EXPECT_EQ("a preset has no channel " + std::to_string(channel),
                  reason(1, "VoltageSet", channel, 1));
    for (const double state : {-1.0, 0.5, 256.0})
        EXPECT_EQ("FuseState is a whole number from 0 to 255", reason(1, "FuseState", 1, state));
}

}  // namespace
