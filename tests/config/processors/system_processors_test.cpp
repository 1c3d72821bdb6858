#include "config/processors/dev_type_processor.h"
#include "config/processors/dev_var_system_processor.h"
#include "config/processors/system_processor.h"
#include "config/records/dev_type_info_data.h"
#include "support/processor_test.h"

namespace {

using namespace hxl_config_handler;
using namespace support;

const std::string MISSED = "[CFileConfig::read int] FAILED to read ";

TEST(SystemProcessor, PublishesSharingAndVersionOrTheirDefaults) {
    const std::string path = configPath("system_config.cfg");
    CProcessorOn<CConfigSystemProcessor> processor(1);
    EXPECT_EQ("0", load(processor)) << "no file";
    writeFile(path, "[CURRENT_SHARING_W1]\nDOMINANT_PART=1.5\nCONVERGE_POINT=-4\n[FW_VERSION]\n");
    EXPECT_EQ(MISSED + "[CURRENT_SHARING_W1]:[SUPPORTING_PART]\n" + MISSED +
                  "[CURRENT_SHARING_W1]:[MID_POINT]\n"
                  "[CFileConfig::read str] FAILED to read [FW_VERSION]:[Value]\n1",
              load(processor));
    EXPECT_EQ("1.500000,0.000000,0.000000,-4.000000 VERSION", numbersIn(29) + ' ' + textsIn(30));
    EXPECT_EQ(nullptr, processor.GetSharedMemData(31));
}

// Which device type reads which sections shows in the test of the shipped files.
TEST(DevVarSystemProcessor, PublishesInRecordOrderWithDefaultsForWhatIsMissing) {
    const std::string path = configPath("dev_var_system_config.cfg");
    writeFile(path,
              "[SETTING_SERVICE_35V_DEV]\nOTP=0.1\n[DRIFT_CORRECTION_35V_DEV]\nTO_APPLY=1\n"
              "CORRECTION_FACTOR=2\nMAX_TEMP=3\nMAX_CURRENT=4\nMINIMUM_VOLTAGE_ERROR=5\n"
              "MAXIMUM_VOLTAGE_ERROR=6\nCORRECTION_FACTOR_DIVISOR=7\nSUB_VOLTAGE=8\n");
    CProcessorOn<CConfigDevVarSystemProcessor> low(1), high(2), noFile(2);
    EXPECT_EQ('1', load(low).back());
    EXPECT_EQ((Doubles{1, 2, 7, 3, 4, 5, 6, 8}), shared().getDoubleVector(28));
    EXPECT_EQ((Doubles{0.1F, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}), shared().getDoubleVector(27));
    EXPECT_EQ('1', load(high).back());
    EXPECT_EQ((Doubles{0, 0.002, 10, 35, 3, 0.001, 0.03, 0.1}), shared().getDoubleVector(28));

    const std::string shm = "get Shared mem data drift DevVarSysProc";
    EXPECT_EQ(shm + '\n' + shm + " 1\n" + shm + " vctr size : 8 \n" + shm + " 2\n",
              printedBy([&] { delete low.GetSharedMemData(28); }));
    EXPECT_EQ(shm + "\n0", outcomeOf([&] { return low.GetSharedMemData(29); }));
    remove(path.c_str());
    EXPECT_EQ("CConfigDevVarSystemProcessor dev type : 2 chn cnt : 2 \nfailed to oepn0",
              load(noFile));
}

// Every line of a save that succeeds or cannot open its file is in the test of the daemon.
TEST(DevTypeProcessor, PublishesOnlyWhatTheFileHolds) {
    const std::string path = configPath("devtype_info.cfg");
    CProcessorOn<CConfigDevTypeProcessor> processor(1);
    CConfDevTypeInfoData record(48, "new");
    EXPECT_EQ("WRITING TO CONFIG FILE DEV TYPE :new \nFile COnfig EMpty \n0",
              save(processor, 48, &record));
    writeFile(path, "[PROCESSED_DEV_INFORMATION]\n");
    const std::string missed = "[CFileConfig::read str] FAILED to read ";
    EXPECT_EQ(missed + "[PROCESSED_DEV_INFORMATION]:[DEV_INFORMATION]\nbReul : 0 \n0",
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
