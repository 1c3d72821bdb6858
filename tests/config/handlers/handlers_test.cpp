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
#include "support/processor_test.h"
#include "support/wait_until.h"

namespace {

using namespace hxl_config_handler;
using namespace support;

const std::string AUTO_SAVE = "conf_auto_save.cfg";
const std::string PRESET = "conf_preset.cfg";

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

bool waitForFile(const std::string& name, const std::string& part) {
    return waitUntil([&] { return has(readFile(configPath(name)), part); });
}

// `line` is printed by a save that fails in every cycle: how often it comes tells the period.
void expectPeriod(std::chrono::milliseconds period, const std::string& line,
                  const std::function<void()>& runForAWhile) {
    const auto start = std::chrono::steady_clock::now();
    const std::string printed = printedBy(runForAWhile);
    const auto elapsed = std::chrono::steady_clock::now() - start;
    long cycles = 0;
    for (std::size_t at = 0; (at = printed.find(line, at)) != std::string::npos; ++at)
        ++cycles;
    EXPECT_LE(cycles * period, elapsed + period);
    EXPECT_GE(cycles * period, elapsed / 50);
}

TEST(AutoSaveHandler, RunningThreadSavesWhatAnotherProcessChanges) {
    CPeer peer([](CPeerMemory& memory) {
        memory.setDoubleVector(0, {2.5, 3});
        memory.setByteVector(16, {1});
        return memory.setStringVector(24, {"a", "b"});
    });
    writeFile(configPath(AUTO_SAVE), "[CONF_STATUS]\nSTATE=0\n");
    facade().setDevTypeInfo(1, 1, false);
    expectPeriod(std::chrono::milliseconds(1), "FAILED TO WRITE ON PRIO KEY", [&] {
        CRunning<CConfigAutoSaveHandler> handler;
        ASSERT_TRUE(waitForFile(AUTO_SAVE, "STATE=1"));
        std::string file = readFile(configPath(AUTO_SAVE));
        EXPECT_EQ(0, peer.run());
        file = replaced(replaced(file, "OUT_MOD=0", "OUT_MOD=1"), "=SSID", "=a,b");
        EXPECT_TRUE(waitForFile(AUTO_SAVE, replaced(file, "=6.000000", "=2.500000,3.000000")));
        shared().setStringVector(25, {""});
        std::this_thread::sleep_for(std::chrono::milliseconds(200));
    });
}

TEST(AutoSaveHandler, StoredValuesDriveTheComparison) {
    struct CHandler : CConfigAutoSaveHandler {
        using CConfigAutoSaveHandler::saveChanges;
    } handler;
    const std::string path = configPath(AUTO_SAVE);
    writeFile(path, "");
    facade().saveDblValues(0, {1, 2});
    facade().saveDblValues(2, {4});
    facade().saveDblValues(3, {5});
    facade().saveSelValues(7, {1});
    facade().saveStrValues(24, {"s"});
    shared().setDoubleVector(0, {1, 2, 3});
    shared().setDoubleVector(1, {9});
    shared().setDoubleVector(2, {});
    shared().setByteVector(7, {1, 2});
    const std::string before = readFile(path);
    const auto written = std::filesystem::last_write_time(path);
    EXPECT_EQ("", printedBy([&] { handler.saveChanges(); }));
    EXPECT_EQ(before, readFile(path)) << "longer, never stored, empty, absent: no differences";
    EXPECT_EQ(written, std::filesystem::last_write_time(path)) << "no write at all";
    shared().setDoubleVector(0, {1});
    shared().setStringVector(24, {"t", "u"});
    handler.saveChanges();
    EXPECT_EQ(replaced(replaced(before, ",2.000000", ""), "=s", "=t,u"), readFile(path))
        << "shorter and other values are";

    const std::string dump = printedBy([&] { handler.printConfData(); });
    for (const char* part :
         {"ConfHdl :: DBL CONF INDEX 2 4.000000 ConfHDL :: DBL SHAREDMEM INDEX 2 ConfHdl :: DBL ",
          "ConfHdl :: SEL CONF INDEX 7 1 ConfHdl :: SEL SHAREDMEM INDEX 7 1 2 ConfHdl :: SEL ",
          "ConfHdl :: SEL SHAREDMEM INDEX 16 ConfHdl :: SEL CONF INDEX 15 ",
          "ConfHdl :: STR CONF INDEX 24 t u ConfHdl :: STR SHAREDMEM INDEX 24 t u ConfHdl :: "}) {
        EXPECT_TRUE(has(dump, part)) << dump;
    }
}

TEST(PresetHandler, RunningThreadSavesThePresetThatAnotherProcessChanges) {
    const auto change = [](core_utils::CSharedMemory& memory, int id) {
        Bytes states = memory.getByteVector(id);
        states.at(17) = 9;
        return memory.setByteVector(id, states);
    };
    CPeer peer(
        [&](CPeerMemory& memory) { return memory.setDoubleVector(32, {}) && change(memory, 37); });
    const std::string path = configPath(PRESET);
    writeFile(path, "[INSTRUMENT_SETTING_3_35_VOLTS_DEV]\nVoltageSet=1.5,2.5\n");
    facade();
    expectPeriod(std::chrono::milliseconds(5), "FileConfig[1],Failed to open", [&] {
        CRunning<CConfigPresetHandler> handler;
        ASSERT_TRUE(waitUntil([] { return bytesIn(41) != ""; })) << "all presets are loaded";
        EXPECT_EQ(0, peer.run());
        ASSERT_TRUE(waitForFile(PRESET, "ChFusionCurrentSet"));
        const std::string file = readFile(path);
        EXPECT_TRUE(has(file, "\nChnConnMode=0,9\n"));
        EXPECT_TRUE(has(file, "\nVoltageSet=1.500000,2.500000\n"));
        EXPECT_EQ(0U, file.rfind('[')) << "no other preset, nor the one that vanished";

        shared().setDoubleVector(32, shared().getDoubleVector(34));
        for (const int number : {1, 2, 4, 5}) {
            change(shared(), 31 + 2 * number);
            EXPECT_TRUE(waitForFile(PRESET, "SETTING_" + std::to_string(number))) << number;
        }
        ASSERT_TRUE(waitForFile(PRESET, "NG_5_35_VOLTS_DEV]\nChFusionCurrentSet"));
        remove(path.c_str());
        shared().setDoubleVector(32, {NAN});
        std::this_thread::sleep_for(std::chrono::milliseconds(200));
    });
}

TEST(PresetHandler, PresetsThatDifferInOneByteAreNotEqual) {
    CConfigPresetHandler handler;
    for (std::size_t byte = 0; byte < offsetof(sPresetBlock, ucChnConnMode) + 2; ++byte) {
        sPresetBlock block{};
        reinterpret_cast<unsigned char*>(&block)[byte] = 1;
        EXPECT_FALSE(handler.isPresetEqual(block, {})) << byte;
    }
    sPresetBlock block{};
    block.fFuseDelay[1] = -0.0F;
    EXPECT_TRUE(handler.isPresetEqual(block, {}));
    block.fFuseDelay[1] = NAN;
    EXPECT_FALSE(handler.isPresetEqual(block, block));
}

TEST(OneShotHandlers, LoadTheirFilesAndPrintThem) {
    writeFile(configPath("system_config.cfg"),
              "[CURRENT_SHARING_W1]\nDOMINANT_PART=1\nSUPPORTING_PART=2\nMID_POINT=3\n"
              "CONVERGE_POINT=4\n[FW_VERSION]\nValue=7.1\n");
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
