#include <signal.h>

#include <cmath>
#include <cstddef>
#include <filesystem>
#include <functional>
#include <thread>

#include "config/handlers/auto_save_handler.h"
#include "config/handlers/dev_var_system_handler.h"
#include "config/handlers/preset_handler.h"
#include "config/handlers/system_handler.h"
#include "config/manager/hxl_config_handler.h"
#include "support/allocations.h"
#include "support/processor_test.h"
#include "support/wait_until.h"

namespace {

using namespace support;

const std::string AUTO_SAVE = configPath("conf_auto_save.cfg");
const std::string PRESET = configPath("conf_preset.cfg");

// A handler whose thread ends before the test does.
template <typename Handler>
struct CRunning : Handler {
    CRunning() {
        EXPECT_TRUE(this->init());
        EXPECT_TRUE(this->start());
    }
    ~CRunning() { core_utils::CAbsWorkerThread::stop(); }
};

CSingletonHxlConfigHandler& facade() {
    return *CSingletonHxlConfigHandler::getInstance();
}

bool waitForFile(const std::string& path, const std::string& part) {
    return waitUntil([&] { return has(readFile(path), part); });
}

// At the end of `action` a save fails in every cycle: how often its `line` comes is the period.
template <typename Handler>
void expectPeriod(int milliseconds, const std::string& line, const std::function<void()>& action) {
    const auto start = std::chrono::steady_clock::now();
    const std::string printed = printedBy([&] {
        CRunning<Handler> handler;
        action();
        std::this_thread::sleep_for(std::chrono::milliseconds(200));
    });
    const std::chrono::duration<double, std::milli> elapsed =
        std::chrono::steady_clock::now() - start;
    int cycles = 0;
    for (std::size_t at = 0; (at = printed.find(line, at)) != std::string::npos; ++at)
        ++cycles;
    EXPECT_LE(cycles * milliseconds, elapsed.count() + milliseconds);
    EXPECT_GE(cycles * milliseconds, elapsed.count() / 50);
}

TEST(AutoSaveHandler, RunningThreadLoadsTheFileAndPolls) {
    writeFile(AUTO_SAVE, "[CONF_STATUS]\nSTATE=0\n");
    facade().setDevTypeInfo(1, 1, false);
    expectPeriod<CConfigAutoSaveHandler>(1, "FAILED TO WRITE ON PRIO KEY", [] {
        ASSERT_TRUE(waitForFile(AUTO_SAVE, "STATE=1"));
        shared().setStringVector(25, {""});
    });
}

TEST(AutoSaveHandler, StoredValuesDriveTheComparisonWhichAllocatesNothing) {
    struct CHandler : CConfigAutoSaveHandler {
        using CConfigAutoSaveHandler::saveChanges;
    } handler;
    const std::string longText(60, 's');
    writeFile(AUTO_SAVE, "");
    facade().saveDblValues(0, {1, 2});
    facade().saveDblValues(2, {4});
    facade().saveSelValues(7, {1});
    facade().saveStrValues(24, {longText});
    shared().setDoubleVector(0, {1, 2, 3});
    shared().setByteVector(7, {1, 2});
    shared().setStringVector(24, {longText});
    shared().setDoubleVector(1, {9});
    shared().setDoubleVector(2, {});
    const std::string before = readFile(AUTO_SAVE);
    const auto written = std::filesystem::last_write_time(AUTO_SAVE);
    countAllocations();
    handler.saveChanges();
    EXPECT_EQ(0, allocations());
    EXPECT_EQ(before, readFile(AUTO_SAVE)) << "longer, never stored, empty, absent: no differences";
    EXPECT_EQ(written, std::filesystem::last_write_time(AUTO_SAVE)) << "no write at all";
    shared().setDoubleVector(0, {1});
    shared().setByteVector(7, {3});
    shared().setStringVector(24, {"t", "u"});
    handler.saveChanges();
    const std::string bytes = replaced(before, "=1\n", "=3\n");
    EXPECT_EQ(replaced(replaced(bytes, ",2.000000", ""), longText, "t,u"), readFile(AUTO_SAVE))
        << "shorter and other values are";

    const std::string dump = printedBy([&] { handler.printConfData(); });
    for (const char* part :
         {"ConfHdl :: DBL CONF INDEX 2 4.000000 ConfHDL :: DBL SHAREDMEM INDEX 2 ConfHdl :: DBL ",
          "ConfHdl :: SEL SHAREDMEM INDEX 16 ConfHdl :: SEL CONF INDEX 15 ",
          "ConfHdl :: STR CONF INDEX 24 t u ConfHdl :: STR SHAREDMEM INDEX 24 t u ConfHdl :: "}) {
        EXPECT_TRUE(has(dump, part)) << dump;
    }
}

TEST(PresetHandler, RunningThreadSavesThePresetThatChanges) {
    const auto change = [](int number) {
        Bytes states = shared().getByteVector(31 + 2 * number);
        states.at(17) = 9;
        shared().setByteVector(31 + 2 * number, states);
    };
    const std::string vanishing = "[INSTRUMENT_SETTING_1_35_VOLTS_DEV]\nVoltageSet=9,9\n[";
    writeFile(PRESET, vanishing + "INSTRUMENT_SETTING_3_35_VOLTS_DEV]\nVoltageSet=1.5,2.5\n");
    facade();
    expectPeriod<CConfigPresetHandler>(5, "FileConfig[1],Failed to open", [&] {
        ASSERT_TRUE(waitUntil([] { return bytesIn(41) != ""; })) << "all presets are loaded";
        shared().setDoubleVector(32, {});
        change(3);
        ASSERT_TRUE(waitForFile(PRESET, "ChFusionCurrentSet"));
        const std::string file = readFile(PRESET);
        EXPECT_TRUE(has(file, "\nChnConnMode=0,9\n"));
        EXPECT_TRUE(has(file, "\nVoltageSet=1.500000,2.500000\n"));
        EXPECT_EQ(vanishing.size() - 1, file.rfind('[')) << "no other preset";

        for (const int number : {2, 4, 5, 1}) {
            if (number == 1) {
                EXPECT_EQ(0U, readFile(PRESET).find(vanishing)) << "what vanished is kept";
                shared().setDoubleVector(32, shared().getDoubleVector(34));
            }
            change(number);
            const std::string section = "SETTING_" + std::to_string(number) + "_35_VOLTS_DEV]\n";
            ASSERT_TRUE(waitForFile(PRESET, section + "ChFusionCurrentSet")) << number;
        }
        remove(PRESET.c_str());
        shared().setDoubleVector(32, {NAN});
    });
}

TEST(PresetHandler, ComparesEveryByteAndAllocatesNothing) {
    struct CHandler : CConfigPresetHandler {
        using CConfigPresetHandler::saveIfChanged;
    } handler;
    for (std::size_t byte = 0; byte < offsetof(sPresetBlock, ucChnConnMode) + 2; ++byte) {
        sPresetBlock block{};
        reinterpret_cast<unsigned char*>(&block)[byte] = 1;
        EXPECT_FALSE(handler.isPresetEqual(block, {})) << byte;
    }
    writeFile(PRESET, "");
    facade().loadPresetConfig();
    ASSERT_NE("", bytesIn(41));
    countAllocations();
    for (int number = 1; number <= 5; ++number)
        handler.saveIfChanged(number);
    EXPECT_EQ(0, allocations());
    EXPECT_EQ("", readFile(PRESET));
}

TEST(AutoSaveHandler, SaveWhatAPeerDiedInOnlyWhenItHasStood) {
    struct CHandler : CConfigAutoSaveHandler {
        using CConfigAutoSaveHandler::saveChanges;
    } handler;
    writeFile(AUTO_SAVE, "[CONF_STATUS]\nSTATE=0\n");
    facade().setDevTypeInfo(1, 2, false);
    facade().loadAutoSaveConfig();
    shared().setDoubleVector(0, {1.0, 2.0});
    handler.saveChanges();
    EXPECT_TRUE(has(readFile(AUTO_SAVE), "VOL_LVL=1.000000,2.000000\n"));
    CPeer peer([](CPeerMemory& memory) {
        auto dieHalfWay = [&] {
            const auto vector =
                memory.mpSharedMemory->find<core_utils::SegmentVector<double>>("VOLTAGE_DATA_MEM");
            vector.first->at(0) = 9.0;
            raise(SIGKILL);
        };
        memory.mpSharedMemory->atomic_func(dieHalfWay);
        return false;
    });
    EXPECT_EQ(-SIGKILL, peer.run());
    handler.saveChanges();
    EXPECT_FALSE(has(readFile(AUTO_SAVE), "VOL_LVL=9"));
    shared().setDoubleVector(0, {9.0, 8.0});
    handler.saveChanges();
    std::this_thread::sleep_for(std::chrono::milliseconds(110));
    handler.saveChanges();
    EXPECT_TRUE(has(readFile(AUTO_SAVE), "VOL_LVL=9.000000,8.000000\n"));
    shared().setDoubleVector(0, {7.0, 8.0});
    handler.saveChanges();
    EXPECT_TRUE(has(readFile(AUTO_SAVE), "VOL_LVL=7")) << "once settled, at once";
}

TEST(OneShotHandlers, LoadTheirFilesAndPrintThem) {
    writeFile(configPath("system_config.cfg"), "[FW_VERSION]\nValue=7.1\n");
    printedBy([] { CRunning<CConfigSystemHandler>(); });
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
