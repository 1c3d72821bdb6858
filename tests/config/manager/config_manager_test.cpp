#include <future>
#include <thread>

#include "config/manager/device_identity.h"
#include "config/manager/hxl_config_handler.h"
#include "support/processor_test.h"

namespace {

using namespace support;
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
    auto& facade = *CSingletonHxlConfigHandler::getInstance();
    CConfigManager first;
    EXPECT_EQ(0, settlingTimeMs("UNKNOWN"));
    EXPECT_EQ(Identity(0, 0), identityOf(first)) << "no object yet";
    for (const auto& row : rows) {
        CConfigManager manager;
        if (row.set.first == 0) {
            shared().setStringVector(48, {row.text});
        } else {
            EXPECT_TRUE(manager.setDevTypeInfo(row.set.first, row.set.second, false));
            EXPECT_EQ(row.set, identityOf(manager));
            facade.setDevTypeInfo(row.set.first, row.set.second, false);
            EXPECT_EQ(row.set.second == 2, facade.isDualChannel());
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
    auto& facade = *CSingletonHxlConfigHandler::getInstance();
    double values[] = {1, 2, 3, 4};
    const std::string path = configPath("correction_current.cfg");
    EXPECT_FALSE(facade.readCurrentCorrection(values));
    EXPECT_FALSE(facade.writeCurrentCorrection(values));
    writeFile(path, "");
    EXPECT_EQ(
        "CSingletonHxlConfigHandler::writeCurrentCorrection check values: 1.000000 2.000000 "
        "3.000000 4.000000 \nCConfigManager::writeCurrentCorrection came in\n1",
        outcomeOf([&] { return facade.writeCurrentCorrection(values); }));
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
              outcomeOf([&] { return facade.readCurrentCorrection(values); }));
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
        writeFile(configPath("conf_auto_save.cfg"), head + number);
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

    const std::string path = configPath("conf_preset.cfg");
    writeFile(path, "");
    manager.loadPresetConfig();
    shared().setStringVector(48, {"100_VOLTS_DEV_2CH"});
    EXPECT_TRUE(manager.savePresetBlock(5, block, true));
    EXPECT_TRUE(has(readFile(path), "_5_100_VOLTS_DEV]")) << "it asks for the identity";

    std::string version = "kept";
    EXPECT_FALSE(manager.getChnFwVersion(version));
    EXPECT_EQ("kept", version);
}

}  // namespace
