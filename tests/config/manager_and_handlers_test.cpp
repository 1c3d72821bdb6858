#include <signal.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <filesystem>
#include <functional>
#include <future>
#include <thread>

#include "config/handlers/auto_save_handler.h"
#include "config/handlers/dev_var_system_handler.h"
#include "config/handlers/preset_handler.h"
#include "config/handlers/system_handler.h"
#include "config/manager/device_identity.h"
#include "config/manager/hxl_config_handler.h"
#include "support/allocations.h"
#include "support/processor_test.h"

namespace {

using namespace support;

const std::string AUTO_SAVE = configPath("conf_auto_save.cfg");
const std::string PRESET = configPath("conf_preset.cfg");

CSingletonHxlConfigHandler& facade() {
    return *CSingletonHxlConfigHandler::getInstance();
}

using Identity = std::pair<int, int>;

Identity identityOf(CConfigManager& manager) {
    Identity identity;
    EXPECT_EQ(manager.getDevTypeInfo(identity), identity.first);
    return identity;
}

TEST(ConfigManager, IdentityAndDeviceStringFollowFromOneAnother) {
    const struct {
        Identity set;  // (0, 0): a peer publishes the text
        const char* text;
        Identity read;
    } rows[] = {
        {{1, 1}, "35_VOLTS_DEV_1CH", {1, 1}},
        {{2, 2}, "100_VOLTS_DEV_2CH", {2, 2}},
        {{3, 1}, "KOL_35_VOLTS_DEV_2CH", {3, 2}},
        {{4, 1}, "", {0, 0}},
        {{0, 0}, "UNKNOWN", {0, 0}},
        {{0, 0}, "KOL_100_VOLTS_DEV", {2, 2}},
        {{0, 0}, "KOL_1CH", {3, 1}},
        {{0, 0}, "anything", {1, 2}},
    };
    CConfigManager first;
    EXPECT_EQ(0, settlingTimeMs("UNKNOWN"));
    EXPECT_EQ(Identity(0, 0), identityOf(first)) << "no object yet";
    for (const auto& row : rows) {
        if (row.set.first == 0) {
            shared().setStringVector(48, {row.text});
        } else {
            EXPECT_TRUE(facade().setDevTypeInfo(row.set.first, row.set.second, false));
            EXPECT_EQ(row.set, facade().getDevTypeInfo());
            EXPECT_EQ(row.set.second == 2, facade().isDualChannel());
            EXPECT_EQ(0, settlingTimeMs(row.text));
        }
        EXPECT_EQ(row.text, textsIn(48));
        CConfigManager reader;
        EXPECT_EQ(row.read, identityOf(reader)) << row.text;
        EXPECT_EQ(Identity(1, 1), identityOf(first)) << "kept once it is known";
    }
}

// A peer that takes no lock is stopped in the middle of its write: new characters, old length.
TEST(ConfigManager, IdentityOfAHalfWrittenTextIsThatOfTheWholeOne) {
    const struct {
        const char* half;
        int standsFor;  // ms
    } rows[] = {
        {"100_VOL", 500}, {"DATA FROM TEST", 500}, {"UNKNO", 500}, {"100_VOLTS_DEV_ xx", 40}};
    for (const auto& row : rows) {
        CConfigManager manager;
        shared().setStringVector(48, {row.half});
        auto identity = std::async(std::launch::async, [&] { return identityOf(manager); });
        std::this_thread::sleep_for(std::chrono::milliseconds(row.standsFor));
        shared().setStringVector(48, {"35_VOLTS_D"});
        std::this_thread::sleep_for(std::chrono::milliseconds(40));
        shared().setStringVector(48, {"KOL_35_VOLTS_DEV_2CH"});
        EXPECT_EQ(Identity(3, 2), identity.get()) << row.half;
    }
}

TEST(ConfigManager, CurrentCorrectionFailsOnlyIfNoKeySucceeds) {
    double values[] = {1, 2, 3, 4};
    const std::string path = configPath("correction_current.cfg");
    EXPECT_FALSE(facade().readCurrentCorrection(values));
    EXPECT_FALSE(facade().writeCurrentCorrection(values));
    writeFile(path, "");
    EXPECT_EQ(
        "CSingletonHxlConfigHandler::writeCurrentCorrection check values: 1.000000 2.000000 "
        "3.000000 4.000000 \nCConfigManager::writeCurrentCorrection came in\n1",
        outcomeOf([&] { return facade().writeCurrentCorrection(values); }));
    EXPECT_EQ(
        "\n[CURRENT_CORRECTION]\nSRC_Low_CurrRange=4.000000\nSRC_High_CurrRange=3.000000\n"
        "SINK_Low_CurrRange=2.000000\nSINK_High_CurrRange=1.000000\n",
        readFile(path));
    writeFile(path, "[CURRENT_CORRECTION]\nSINK_Low_CurrRange=8\nSRC_Low_CurrRange=x\n");
    const std::string failed = "failed to read section : CURRENT_CORRECTION with key : S";
    EXPECT_EQ(missed("int", "[CURRENT_CORRECTION]:[SINK_High_CurrRange]") + failed +
                  "INK_High_CurrRange\n" +
                  missed("int", "[CURRENT_CORRECTION]:[SRC_High_CurrRange]") + failed +
                  "RC_High_CurrRange\n" + failed + "RC_Low_CurrRange\n1",
              outcomeOf([&] { return facade().readCurrentCorrection(values); }));
    EXPECT_EQ("1.000000,8.000000,3.000000,4.000000", joinList(values));
}

TEST(ConfigManager, SyncMarkIsAddedToTheSystemFileWhichMustExist) {
    CConfigManager manager;
    int mark = 5;
    const std::string path = configPath("system_config.cfg");
    EXPECT_FALSE(manager.readSettingSync(mark));
    EXPECT_FALSE(manager.writeSettingSync(1));
    writeFile(path, "[FW_VERSION]\nValue=7\n");
    EXPECT_TRUE(manager.writeSettingSync(-1));
    EXPECT_TRUE(manager.readSettingSync(mark));
    EXPECT_EQ(-1, mark);
    EXPECT_EQ("[FW_VERSION]\nValue=7\n\n[SETTING_SYNC]\nSYNC=-1\n", readFile(path));
}

TEST(ConfigManager, BadNumberEndsALoadInsideTheManager) {
    const std::string head = "[CONF_STATUS]\nSTATE=1\n[CONF_ITEM_DBL]\nVOL_LVL=";
    for (const char* number : {"x", "1e999"}) {
        writeFile(AUTO_SAVE, head + number);
        EXPECT_EQ("CConfigManager :: loadAutoSaveConfig exception : stod \n0",
                  outcomeOf([&] { return CConfigManager().loadAutoSaveConfig(); }));
    }
}

TEST(ConfigManager, PresetAndVersionComeFromSharedMemoryOrNotAtAll) {
    CConfigManager manager;
    sPresetBlock block{}, published{};
    block.ucOvpMode[0] = 7;
    for (const int number : {-1, 0, 6, 42}) {
        EXPECT_FALSE(manager.savePresetBlock(number, block, false)) << number;
        EXPECT_FALSE(manager.getPresetBlock(number, block, true)) << number;
    }
    EXPECT_TRUE(manager.savePresetBlock(5, block, false));
    EXPECT_TRUE(manager.getPresetBlock(5, published, false));
    EXPECT_EQ(7, published.ucOvpMode[0]);

    writeFile(PRESET, "");
    manager.loadPresetConfig();
    shared().setStringVector(48, {"100_VOLTS_DEV_2CH"});
    EXPECT_TRUE(manager.savePresetBlock(5, block, true));
    EXPECT_TRUE(has(readFile(PRESET), "_5_100_VOLTS_DEV]")) << "it asks for the identity";

    std::string version = "kept";
    EXPECT_FALSE(manager.getChnFwVersion(version));
    EXPECT_EQ("kept", version);
}

// A handler whose thread ends before the test does.
template <typename Handler>
struct CRunning : Handler {
    CRunning() {
        EXPECT_TRUE(this->init());
        EXPECT_TRUE(this->start());
    }
    ~CRunning() { core_utils::CAbsWorkerThread::stop(); }
};

struct CAutoSaveHandler : CConfigAutoSaveHandler {
    using CConfigAutoSaveHandler::saveChanges;
};
struct CPresetHandler : CConfigPresetHandler {
    using CConfigPresetHandler::saveIfChanged;
};

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
    CAutoSaveHandler handler;
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

TEST(PresetHandler, RunningThreadLoadsTheFileAndPollsEachPreset) {
    writeFile(PRESET, "");
    facade();
    expectPeriod<CConfigPresetHandler>(5, "FileConfig[1],Failed to open", [] {
        ASSERT_TRUE(waitUntil([] { return bytesIn(41) != ""; })) << "all presets are loaded";
        for (int number = 1; number <= 5; ++number) {
            shared().setDoubleVector(30 + 2 * number, {1.5});
            ASSERT_TRUE(waitForFile(PRESET, "_" + std::to_string(number) + "_35_VOLTS_DEV]"));
        }
        remove(PRESET.c_str());
        shared().setDoubleVector(32, {NAN});
    });
}

TEST(PresetHandler, ComparesEveryByteWithoutAnAllocationAndSavesOnlyWhatDiffers) {
    CPresetHandler handler;
    for (std::size_t byte = 0; byte < offsetof(sPresetBlock, ucChnConnMode) + 2; ++byte) {
        sPresetBlock block{};
        reinterpret_cast<unsigned char*>(&block)[byte] = 1;
        EXPECT_FALSE(handler.isPresetEqual(block, {})) << byte;
    }
    const std::string before = "[INSTRUMENT_SETTING_1_35_VOLTS_DEV]\nVoltageSet=9,9\n";
    writeFile(PRESET, before);
    facade().loadPresetConfig();
    for (const bool changed : {false, true}) {
        if (changed) {
            shared().setDoubleVector(32, {});
            shared().setByteVector(37, {7});
        }
        countAllocations();
        for (int number = 1; number <= 5; ++number)
            handler.saveIfChanged(number);
        EXPECT_EQ(changed, allocations() > 0);
        const std::string file = readFile(PRESET);
        EXPECT_EQ(0U, file.find(before)) << "what vanished from the segment is kept";
        EXPECT_EQ(changed, has(file, "\n[INSTRUMENT_SETTING_3_35_VOLTS_DEV]\n"));
        EXPECT_EQ(changed, has(file, "\nFuseState=7,0\n"));
        EXPECT_EQ(changed ? 2 : 1, std::count(file.begin(), file.end(), '['));
    }
}

// Such a peer may have left a change half made.
TEST(Handlers, SaveOnlyWhatHasStoodAfterTheDeathOfAPeerThatHeldTheLock) {
    CAutoSaveHandler items;
    CPresetHandler presets;
    const auto isSaved = [&items](const Doubles& values) {
        shared().setDoubleVector(0, values);
        items.saveChanges();
        return has(readFile(AUTO_SAVE), "VOL_LVL=" + joinList(values) + '\n');
    };
    const auto isNaNSaved = [&presets] {
        shared().setDoubleVector(32, {NAN});
        presets.saveIfChanged(1);
        return has(readFile(PRESET), "VoltageSet=nan,");
    };
    for (const std::string& path : {AUTO_SAVE, PRESET})
        writeFile(path, "");
    facade().loadPresetConfig();
    facade().saveDblValues(0, {1, 2});
    EXPECT_TRUE(isSaved({2, 2}));
    EXPECT_EQ(-SIGKILL, CPeer(raiseUnderLock(SIGKILL)).run());
    EXPECT_FALSE(isSaved({9, 2}));
    EXPECT_FALSE(isNaNSaved());
    std::this_thread::sleep_for(std::chrono::milliseconds(110));
    EXPECT_FALSE(isSaved({9, 8})) << "another value";
    EXPECT_TRUE(isNaNSaved()) << "although it equals nothing";
    std::this_thread::sleep_for(std::chrono::milliseconds(110));
    EXPECT_TRUE(isSaved({9, 8}));
    EXPECT_TRUE(isSaved({7, 8})) << "once settled, at once";
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
