#include <gtest/gtest.h>

#include "config/records/current_sharing_data.h"
#include "config/records/drift_correction_data.h"
#include "config/records/preset_data.h"
#include "config/records/service_setting_data.h"
#include "support/files.h"

namespace {

using namespace hxl_config_handler;
using Doubles = std::vector<double>;
using Bytes = std::vector<unsigned char>;
using Texts = std::vector<std::string>;

template <typename Record, typename Values>
bool isEqual(const Values& mine, const Values& others) {
    return Record(1, mine).IsEqual(Record(2, others));
}

TEST(Records, DoublesAndTextsCompareTheOtherRecordsPrefixBytesCompareAll) {
    EXPECT_TRUE(isEqual<CConfAutoSaveDataDbl>(Doubles{1, 2}, Doubles{1}));
    EXPECT_TRUE(isEqual<CConfAutoSaveDataDbl>(Doubles{1, 2}, Doubles{}));
    EXPECT_FALSE(isEqual<CConfAutoSaveDataDbl>(Doubles{1, 2}, Doubles{1, 2, 3}));
    EXPECT_FALSE(isEqual<CConfAutoSaveDataDbl>(Doubles{1, 2}, Doubles{1, 2.5}));
    EXPECT_TRUE(isEqual<CConfAutoSaveDataSel>(Bytes{}, Bytes{}));
    EXPECT_FALSE(isEqual<CConfAutoSaveDataSel>(Bytes{1}, Bytes{1, 0}));
    EXPECT_FALSE(isEqual<CConfAutoSaveDataSel>(Bytes{1, 0}, Bytes{1}));
    EXPECT_TRUE(isEqual<CConfAutoSaveDataStr>(Texts{"SSID"}, Texts{}));
    EXPECT_FALSE(isEqual<CConfAutoSaveDataStr>(Texts{"SSID"}, Texts{"SSI"}));
    EXPECT_FALSE(isEqual<CConfAutoSaveDataStr>(Texts{}, Texts{""}));
}

TEST(Records, DumpHasTheKeyTheIdentifierAndTheValues) {
    CConfAutoSaveDataSel bytes(16, std::string("OUT_MOD"));
    bytes.SetValues({0, 1});
    EXPECT_EQ(
        "CNFKEY:OUT_MOD CONF INDEX 16 \n0 1 \n "
        "CNFKEY:DEF CONF INDEX 0 \n\n1.500000 -2.000000 \n\n "
        "CNFKEY:DEF CONF INDEX 24 \n\na b \n\n ",
        support::printedBy([&] {
            bytes.PrintConfData();
            CConfAutoSaveDataDbl(0, Doubles{1.5, -2.0}).PrintConfData();
            CConfAutoSaveDataStr(24, Texts{"a", "b"}).PrintConfData();
            CConfPresetData(42, sPresetBlock{}).PrintConfData();
        }));
}

TEST(Records, CompositeNumbersAreZeroBelowTheNeededCount) {
    const auto doubles = [](std::size_t count) {
        return CConfAutoSaveDataDbl(1, std::vector<double>(count, 1.1));
    };
    EXPECT_EQ(0.0F, CConfServiceSetingData(27, doubles(10)).GetNumbers()[0]);
    EXPECT_EQ(1.1F, CConfServiceSetingData(27, doubles(12)).GetNumbers()[10]);
    EXPECT_EQ(0.0, CConfDriftCorrectionData(28, doubles(7)).GetNumbers()[0]);
    EXPECT_EQ(1.1, CConfDriftCorrectionData(28, doubles(8)).GetNumbers()[7]);
    EXPECT_EQ(0.0, CConfCurrentSharingData(29, doubles(3)).GetNumbers()[0]);
    EXPECT_EQ((std::array<double, 6>{1.1, 1.1, 1.1, 1.1, 1.1, 0.0}),
              CConfCurrentSharingData(29, doubles(5)).GetNumbers());

    EXPECT_EQ("CConfServiceSetingData", CConfServiceSetingData(27).GetKey());
    EXPECT_EQ("CServiceSetingData", CConfServiceSetingData(27, doubles(11)).GetKey());
    EXPECT_EQ("DEF", CConfServiceSetingData(5).GetDblData().GetKey());
    EXPECT_EQ(27, CConfServiceSetingData(5).GetDblData().GetIndex());
    EXPECT_EQ(28, CConfDriftCorrectionData(5).GetDblData().GetIndex());
    EXPECT_EQ(5, CConfCurrentSharingData(5).GetDblData().GetIndex());
}

}  // namespace
