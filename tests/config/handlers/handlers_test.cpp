#include <filesystem>

#include "config/handlers/auto_save_handler.h"
#include "config/handlers/dev_var_system_handler.h"
#include "config/handlers/preset_handler.h"
#include "config/handlers/system_handler.h"
#include "config/manager/hxl_config_handler.h"
#include "config/processors/processor_test.h"
#include "support/wait_until.h"

namespace {

using namespace hxl_config_handler;
using namespace support;

// A handler whose thread ends before the test does.
template <typename Handler>
struct CRunning : Handler {
    CRunning() { EXPECT_TRUE(this->init() && this->start()); }
    ~CRunning() { core_utils::CAbsWorkerThread::stop(); }
};

CSingletonHxlConfigHandler& facade() {
    return *CSingletonHxlConfigHandler::getInstance();
}

bool waitForFile(const std::string& name, const std::string& part) {
    return waitUntil([&] { return readFile(configPath(name)).find(part) != std::string::npos; });
}

TEST(AutoSaveHandler, RunningThreadSavesWhatAnotherProcessChanges) {
    CPeer peer([](CPeerMemory& memory) {
        return memory.setDoubleVector(0, {2.5, 3}) && memory.setByteVector(16, {1}) &&
               memory.setStringVector(24, {"a", "b"});
    });
    const std::string name = "conf_auto_save.cfg";
    writeFile(configPath(name), "[CONF_STATUS]\nSTATE=0\n");
    facade().setDevTypeInfo(1, 1, false);
    printedBy([&] {
        CRunning<CConfigAutoSaveHandler> handler;
        ASSERT_TRUE(waitForFile(name, "STATE=1"));
        std::string file = readFile(configPath(name));
        EXPECT_EQ(0, peer.run());
        file = replaced(replaced(file, "OUT_MOD=0", "OUT_MOD=1"), "=SSID", "=a,b");
        EXPECT_TRUE(waitForFile(name, replaced(file, "=6.000000", "=2.500000,3.000000")));
    });
}

TEST(AutoSaveHandler, StoredValuesDriveTheComparison) {
    struct CHandler : CConfigAutoSaveHandler {
        using CConfigAutoSaveHandler::saveChanges;
    } handler;
    const std::string path = configPath("conf_auto_save.cfg");
    writeFile(path, "");
    facade().saveDblValues(0, {1, 2});
    facade().saveSelValues(7, {1});
    facade().saveStrValues(24, {"s"});
    shared().setDoubleVector(0, {1, 2, 3});
    shared().setDoubleVector(1, {9});
    shared().setByteVector(7, {1, 2});
    const std::string before = readFile(path);
    const auto written = std::filesystem::last_write_time(path);
    EXPECT_EQ("", printedBy([&] { handler.saveChanges(); }));
    EXPECT_EQ(before, readFile(path)) << "longer, never stored and absent are no differences";
    EXPECT_EQ(written, std::filesystem::last_write_time(path)) << "no write at all";
    shared().setDoubleVector(0, {1});
    shared().setStringVector(24, {"t", "u"});
    handler.saveChanges();
    EXPECT_EQ(replaced(replaced(before, ",2.000000", ""), "=s", "=t,u"), readFile(path))
        << "shorter and other values are";
}

TEST(AutoSaveHandler, DumpHasTheStoredAndTheSharedValues) {
    writeFile(configPath("conf_auto_save.cfg"), "");
    facade().saveDblValues(5, {1.5});
    shared().setByteVector(16, {0, 1});
    shared().setStringVector(24, {"a", "b"});
    const std::string printed = printedBy([] { CConfigAutoSaveHandler().printConfData(); });
    for (const char* part :
         {"ConfHdl :: DBL CONF INDEX 5 1.500000 ConfHDL :: DBL SHAREDMEM INDEX 5 ConfHdl :: SEL ",
          "ConfHdl :: SEL SHAREDMEM INDEX 16 0 1 ConfHdl :: SEL CONF INDEX 15 ConfHdl :: SEL ",
          "ConfHdl :: STR CONF INDEX 24 ConfHdl :: STR SHAREDMEM INDEX 24 a b ConfHdl :: STR "}) {
        EXPECT_NE(std::string::npos, printed.find(part)) << printed;
    }
}

TEST(PresetHandler, RunningThreadSavesThePresetThatAnotherProcessChanges) {
    CPeer peer([](CPeerMemory& memory) {
        Bytes states = memory.getByteVector(37);
        states.at(17) = 9;
        return memory.setDoubleVector(32, {}) && memory.setByteVector(37, states);
    });
    const std::string name = "conf_preset.cfg";
    writeFile(configPath(name), "[INSTRUMENT_SETTING_3_35_VOLTS_DEV]\nVoltageSet=1.5,2.5\n");
    facade();
    printedBy([&] {
        CRunning<CConfigPresetHandler> handler;
        ASSERT_TRUE(waitUntil([] { return bytesIn(41) != ""; })) << "all presets are loaded";
        EXPECT_EQ(0, peer.run());
        ASSERT_TRUE(waitForFile(name, "ChFusionCurrentSet"));
    });
    const std::string file = readFile(configPath(name));
    EXPECT_NE(std::string::npos, file.find("\nChnConnMode=0,9\n"));
    EXPECT_NE(std::string::npos, file.find("\nVoltageSet=1.500000,2.500000\n"));
    EXPECT_EQ(0U, file.rfind('[')) << "no other preset, nor the one that vanished";
}

TEST(OneShotHandlers, LoadTheirFilesAndPrintThem) {
    writeFile(configPath("system_config.cfg"),
              "[CURRENT_SHARING_W1]\nDOMINANT_PART=1\nSUPPORTING_PART=2\nMID_POINT=3\nCONVERGE_"
              "POINT=4\n[FW_VERSION]\nValue=7.1\n");
    EXPECT_EQ("", printedBy([] { CRunning<CConfigSystemHandler>(); }));
    EXPECT_EQ("1.000000,2.000000,3.000000,4.000000", numbersIn(29));
    shared().setDoubleVector(29, {1, 2, 3, 4, 5, 6});
    std::string expected;
    for (const char* line : {"dDominantPart :1", "dSupportingPart :2", "dMidPoint :3",
                             "dConvergePoint :4", "dUpwardGrad_Ch1 :6", "dDownwardGrad_Ch2 :5"}) {
        expected += std::string("sCurrentSharing Setting ") + line + ".000000 \n";
    }
    EXPECT_EQ(expected + "CHN FW Version :7.1 \n",
              printedBy([] { CConfigSystemHandler().printSystemConfig(); }));
    EXPECT_EQ(
        "CConfigManager :: parseDevVarSystemConfigFile \nCConfigDevVarSystemProcessor dev type : 0 "
        "chn cnt : 0 \nfailed to oepn",
        printedBy([] { CRunning<CConfigDevVarSystemHandler>(); }));
}

}  // namespace
