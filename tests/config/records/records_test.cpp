#include <gtest/gtest.h>

#include "config/records/current_sharing_data.h"
#include "config/records/drift_correction_data.h"
#include "config/records/service_setting_data.h"
#include "support/files.h"
#include "support/peer.h"

namespace {

using namespace hxl_config_handler;
using namespace support;

template <typename T>
bool isEqual(const std::vector<T>& mine, const std::vector<T>& others) {
    return CConfAutoSaveData<T>(1, mine).IsEqual(CConfAutoSaveData<T>(2, others));
}

TEST(Records, DoublesAndTextsCompareTheOtherRecordsPrefixBytesCompareAll) {
    EXPECT_TRUE(isEqual(Doubles{1, 2}, {1}));
    EXPECT_FALSE(isEqual(Doubles{1, 2}, {1, 2, 3}));
    EXPECT_FALSE(isEqual(Doubles{1, 2}, {1, 2.5}));
    EXPECT_TRUE(isEqual(Texts{"SSID"}, {}));
    EXPECT_FALSE(isEqual(Texts{"SSID"}, {"SSI"}));
    EXPECT_TRUE(isEqual(Bytes{1, 0}, {1, 0}));
    EXPECT_FALSE(isEqual(Bytes{1, 0}, {1}));
}

TEST(Records, DumpHasTheKeyTheIdentifierAndTheValues) {
    CConfAutoSaveDataSel bytes(16, std::string("OUT_MOD"));
    bytes.SetValues({0, 1});
    EXPECT_EQ("CNFKEY:OUT_MOD CONF INDEX 16 \n0 1 \n CNFKEY:DEF CONF INDEX 24 \n\na b \n\n ",
              printedBy([&] {
                  bytes.PrintConfData();
                  CConfAutoSaveDataStr(24, Texts{"a", "b"}).PrintConfData();
              }));
}

TEST(Records, CompositeNumbersAreZeroBelowTheNeededCount) {
    const auto of = [](std::size_t count) { return CConfAutoSaveDataDbl(1, Doubles(count, 1.1)); };
    EXPECT_EQ(0.0F, CConfServiceSetingData(27, of(10)).GetNumbers()[0]);
    EXPECT_EQ(1.1F, CConfServiceSetingData(27, of(12)).GetNumbers()[10]);
    EXPECT_EQ(0.0, CConfDriftCorrectionData(28, of(7)).GetNumbers()[0]);
    EXPECT_EQ(1.1, CConfDriftCorrectionData(28, of(8)).GetNumbers()[7]);
    EXPECT_EQ(0.0, CConfCurrentSharingData(29, of(3)).GetNumbers()[0]);
    EXPECT_EQ(1.1, CConfCurrentSharingData(29, of(5)).GetNumbers()[4]);
    EXPECT_NE(CConfServiceSetingData(5, of(11)).GetKey(), CConfServiceSetingData(5).GetKey());
    EXPECT_EQ(27, CConfServiceSetingData(5).GetDblData().GetIndex());
    EXPECT_EQ(5, CConfCurrentSharingData(5).GetDblData().GetIndex());
}

}  // namespace
