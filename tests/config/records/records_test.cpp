#include "config/records/current_sharing_data.h"
#include "config/records/service_setting_data.h"
#include "support/processor_test.h"

namespace {

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
    EXPECT_FALSE(isEqual(Bytes{1, 0}, {1}));
}

TEST(Records, CompositeNumbersAreZeroBelowTheNeededCount) {
    const auto of = [](std::size_t count) { return CConfAutoSaveDataDbl(1, Doubles(count, 1.1)); };
    EXPECT_EQ(0.0F, CConfServiceSetingData(27, of(10)).GetNumbers()[0]);
    EXPECT_EQ(1.1F, CConfServiceSetingData(27, of(12)).GetNumbers()[10]);
    EXPECT_EQ(0.0, CConfCurrentSharingData(29, of(3)).GetNumbers()[0]);
    EXPECT_EQ(1.1, CConfCurrentSharingData(29, of(5)).GetNumbers()[4]);
}

}  // namespace
