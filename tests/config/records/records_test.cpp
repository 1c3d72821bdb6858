#include <gtest/gtest.h>

#include "config/records/current_sharing_data.h"
#include "config/records/drift_correction_data.h"
#include "config/records/preset_data.h"
#include "config/records/service_setting_data.h"
#include "support/files.h"
#include "support/peer.h"

namespace {

using namespace hxl_config_handler;
using namespace support;

template <typename Value>
bool isEqual(const std::vector<Value>& mine, const std::vector<Value>& others) {
    return CConfAutoSaveData<Value>(1, mine).IsEqual(CConfAutoSaveData<Value>(2, others));
}

TEST(Records, DoublesAndTextsCompareTheOtherRecordsPrefixBytesCompareAll) {
    EXPECT_TRUE(isEqual(Doubles{1, 2}, {1}) && isEqual(Doubles{1, 2}, {}));
    EXPECT_FALSE(isEqual(Doubles{1, 2}, {1, 2, 3}) || isEqual(Doubles{1, 2}, {1, 2.5}));
    EXPECT_TRUE(isEqual(Texts{"SSID"}, {}));
    EXPECT_FALSE(isEqual(Texts{"SSID"}, {"SSI"}) || isEqual(Texts{}, {""}));
    EXPECT_TRUE(isEqual(Bytes{}, {}) && isEqual(Bytes{1, 0}, {1, 0}));
    EXPECT_FALSE(isEqual(Bytes{1}, {1, 0}) || isEqual(Bytes{1, 0}, {1}));
}

TEST(Records, DumpHasTheKeyTheIdentifierAndTheValues) {
    CConfAutoSaveDataSel bytes(16, std::string("OUT_MOD"));
    bytes.SetValues({0, 1});
    const std::string printed = printedBy([&] {
        bytes.PrintConfData();
        CConfAutoSaveDataDbl(0, Doubles{1.5, -2.0}).PrintConfData();
        CConfAutoSaveDataStr(24, Texts{"a", "b"}).PrintConfData();
        CConfPresetData(42, sPresetBlock{}).PrintConfData();
    });
    EXPECT_EQ(
        "CNFKEY:OUT_MOD CONF INDEX 16 \n0 1 \n "
        "CNFKEY:DEF CONF INDEX 0 \n\n1.500000 -2.000000 \n\n "
        "CNFKEY:DEF CONF INDEX 24 \n\na b \n\n ",
        printed);
}

TEST(Records, CompositeNumbersAreZeroBelowTheNeededCount) {
    const auto of = [](std::size_t count) { return CConfAutoSaveDataDbl(1, Doubles(count, 1.1)); };
    EXPECT_EQ(0.0F, CConfServiceSetingData(27, of(10)).GetNumbers()[0]);
    EXPECT_EQ(1.1F, CConfServiceSetingData(27, of(12)).GetNumbers()[10]);
    EXPECT_EQ(0.0, CConfDriftCorrectionData(28, of(7)).GetNumbers()[0]);
    EXPECT_EQ(1.1, CConfDriftCorrectionData(28, of(8)).GetNumbers()[7]);
    EXPECT_EQ(0.0, CConfCurrentSharingData(29, of(3)).GetNumbers()[0]);
    EXPECT_EQ(1.1, CConfCurrentSharingData(29, of(5)).GetNumbers()[4]);
    EXPECT_EQ(0.0, CConfCurrentSharingData(29, of(5)).GetNumbers()[5]);
    EXPECT_EQ("CConfServiceSetingData", CConfServiceSetingData(5).GetKey());
    EXPECT_EQ("CServiceSetingData", CConfServiceSetingData(5, of(11)).GetKey());
    EXPECT_EQ(27, CConfServiceSetingData(5).GetDblData().GetIndex());
    EXPECT_EQ(5, CConfCurrentSharingData(5).GetDblData().GetIndex());
}

}  // namespace
