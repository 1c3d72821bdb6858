#include "config/processors/dev_type_processor.h"
#include "config/processors/dev_var_system_processor.h"
#include "config/processors/system_processor.h"
#include "config/records/chn_fw_version_data.h"
#include "config/records/current_sharing_data.h"
#include "config/records/dev_type_info_data.h"
#include "support/processor_test.h"

namespace {

using namespace support;

TEST(SystemProcessor, PublishesSharingAndVersionOrTheirDefaults) {
    CProcessorOn<CConfigSystemProcessor> processor(1);
    EXPECT_EQ("0", load(processor)) << "no file";
    writeFile(configPath("system_config.cfg"),
              "[CURRENT_SHARING_W1]\nDOMINANT_PART=1.5\nCONVERGE_POINT=-4\n[FW_VERSION]\n");
    EXPECT_EQ(missed("int", "[CURRENT_SHARING_W1]:[SUPPORTING_PART]") +
                  missed("int", "[CURRENT_SHARING_W1]:[MID_POINT]") +
                  missed("str", "[FW_VERSION]:[Value]") + '1',
              load(processor));
    EXPECT_EQ("1.500000,0.000000,0.000000,-4.000000 VERSION", numbersIn(29) + ' ' + textsIn(30));
    EXPECT_EQ(nullptr, processor.GetSharedMemData(31));
    const auto& sharing = dynamic_cast<CConfCurrentSharingData&>(*processor.GetConfData(29));
    EXPECT_EQ(-4, sharing.GetNumbers()[3]);
    EXPECT_EQ("VERSION",
              dynamic_cast<CConfChnFwVersionData&>(*processor.GetConfData(30)).GetText());
}

// What is published for a missing key shows in the test of the shipped files.
TEST(DevVarSystemProcessor, PublishesTheSectionsOfItsVariantInRecordOrder) {
    const std::string path = configPath("dev_var_system_config.cfg");
    const std::string variants[] = {"", "_35V_DEV", "_100V_DEV", "_35V_DEV"};
    for (int devType = 0; devType <= 3; ++devType) {
        SCOPED_TRACE(devType);
        writeFile(path, "[SETTING_SERVICE" + variants[devType] + "]\nOTP=0.1\n[DRIFT_CORRECTION" +
                            variants[devType] +
                            "]\nTO_APPLY=1\nCORRECTION_FACTOR=2\nMAX_TEMP=3\nMAX_CURRENT=4\n"
                            "MINIMUM_VOLTAGE_ERROR=5\nMAXIMUM_VOLTAGE_ERROR=6\n"
                            "CORRECTION_FACTOR_DIVISOR=7\nSUB_VOLTAGE=8\n");
        CProcessorOn<CConfigDevVarSystemProcessor> processor(devType);
        EXPECT_EQ('1', load(processor).back());
        EXPECT_EQ((Doubles{1, 2, 7, 3, 4, 5, 6, 8}), shared().getDoubleVector(28));
        EXPECT_EQ((Doubles{0.1F, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}), shared().getDoubleVector(27));
    }
    CProcessorOn<CConfigDevVarSystemProcessor> processor(2);
    const std::string shm = "get Shared mem data drift DevVarSysProc";
    EXPECT_EQ(shm + '\n' + shm + " 1\n" + shm + " vctr size : 8 \n" + shm + " 2\n",
              printedBy([&] { delete processor.GetSharedMemData(28); }));
    EXPECT_EQ(shm + "\n0", outcomeOf([&] { return processor.GetSharedMemData(29); }));
}

// Every line of a save that succeeds or cannot open its file is in the test of the daemon.
TEST(DevTypeProcessor, PublishesOnlyWhatTheFileHolds) {
    const std::string path = configPath("devtype_info.cfg");
    CProcessorOn<CConfigDevTypeProcessor> processor(1);
    CConfDevTypeInfoData record(48, "new");
    EXPECT_EQ("WRITING TO CONFIG FILE DEV TYPE :new \nFile COnfig EMpty \n0",
              save(processor, 48, &record));
    writeFile(path, "[PROCESSED_DEV_INFORMATION]\n");
    EXPECT_EQ(missed("str", "[PROCESSED_DEV_INFORMATION]:[DEV_INFORMATION]") + "bReul : 0 \n0",
              load(processor));
    EXPECT_EQ("", textsIn(48));
    EXPECT_EQ("0", save(processor, 48, nullptr));
    const std::string first = save(processor, 48, &record);
    EXPECT_EQ(first, save(processor, 48, &record)) << "all lines again";
    EXPECT_EQ("[PROCESSED_DEV_INFORMATION]\nDEV_INFORMATION=new\n", readFile(path));
    EXPECT_EQ("1", load(processor));
    EXPECT_EQ("new", textsIn(48));
}

}  // namespace
