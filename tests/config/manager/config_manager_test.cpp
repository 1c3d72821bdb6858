#include <future>
#include <thread>

#include "config/manager/hxl_config_handler.h"
#include "config/processors/processor_test.h"

namespace {

using namespace hxl_config_handler;
using namespace support;
using Identity = std::pair<int, int>;

Identity identityOf(CConfigManager& manager) {
    Identity identity;
    EXPECT_EQ(manager.getDevTypeInfo(identity), identity.first);
    return identity;
}

TEST(ConfigManager, IdentityComesFromTheDeviceStringAndIsKeptOnceKnown) {
    CConfigManager waiting;
    EXPECT_EQ(Identity(0, 0), identityOf(waiting)) << "no object yet";
    const std::pair<const char*, Identity> strings[] = {{"", {0, 0}},
                                                        {"UNKNOWN", {0, 0}},
                                                        {"100_VOLTS_DEV_1CH", {2, 1}},
                                                        {"KOL_100_VOLTS_DEV", {2, 2}},
                                                        {"KOL_1CH", {3, 1}},
                                                        {"anything", {1, 2}}};
    for (const auto& [text, identity] : strings) {
        shared().setStringVector(48, {text});
        CConfigManager manager;
        EXPECT_EQ(identity, identityOf(manager)) << text;
        EXPECT_EQ(identity.first == 0 ? Identity(0, 0) : Identity(2, 1), identityOf(waiting));
    }

    const Texts written = {"35_VOLTS_DEV_1CH",  "35_VOLTS_DEV_2CH",     "100_VOLTS_DEV_1CH",
                           "100_VOLTS_DEV_2CH", "KOL_35_VOLTS_DEV_2CH", "KOL_35_VOLTS_DEV_2CH"};
    for (std::size_t i = 0; i < 6; ++i) {
        const Identity identity(static_cast<int>(i / 2 + 1), static_cast<int>(i % 2 + 1));
        EXPECT_TRUE(waiting.setDevTypeInfo(identity.first, identity.second, false));
        EXPECT_EQ(written[i], textsIn(48));
        EXPECT_EQ(identity, identityOf(waiting));
    }
    EXPECT_TRUE(waiting.setDevTypeInfo(4, 1, false));
    EXPECT_EQ("", textsIn(48));
}

// A peer that takes no lock is stopped in the middle of its write: new characters, old length.
TEST(ConfigManager, IdentityOfAHalfWrittenTextIsThatOfTheWholeOne) {
    const std::pair<const char*, int> halves[] = {
        {"100_VOL", 800}, {"DATA FROM TEST", 800}, {"UNKNO", 800}, {"100_VOLTS_DEV_ xx", 80}};
    for (const auto& [half, ms] : halves) {
        CConfigManager manager;
        shared().setStringVector(48, {half});
        auto identity = std::async(std::launch::async, [&] { return identityOf(manager); });
        std::this_thread::sleep_for(std::chrono::milliseconds(ms));
        shared().setStringVector(48, {"KOL_35_VOLTS_DEV_2CH"});
        EXPECT_EQ(Identity(3, 2), identity.get()) << half;
    }
}

TEST(ConfigManager, CurrentCorrectionFailsOnlyIfNoKeySucceeds) {
    auto& facade = *CSingletonHxlConfigHandler::getInstance();
    double values[] = {1, 2, 3, 4};
    const auto read = [&] { return facade.readCurrentCorrection(values); };
    const auto write = [&] { return facade.writeCurrentCorrection(values); };
    const std::string path = configPath("correction_current.cfg");
    const std::string writing =
        "CSingletonHxlConfigHandler::writeCurrentCorrection check values: 1.000000 2.000000 "
        "3.000000 4.000000 \nCConfigManager::writeCurrentCorrection came in\n";
    EXPECT_EQ("0", outcomeOf(read));
    EXPECT_EQ(writing + "0", outcomeOf(write));
    writeFile(path, "");
    EXPECT_EQ(writing + "1", outcomeOf(write));
    EXPECT_EQ(
        "\n[CURRENT_CORRECTION]\nSRC_Low_CurrRange=4.000000\nSRC_High_CurrRange=3.000000\n"
        "SINK_Low_CurrRange=2.000000\nSINK_High_CurrRange=1.000000\n",
        readFile(path));
    writeFile(path, "[CURRENT_CORRECTION]\nSINK_Low_CurrRange=x\nSRC_Low_CurrRange=8\n");
    const std::string missed = "[CFileConfig::read int] FAILED to read [CURRENT_CORRECTION]:[";
    const std::string failed = "failed to read section : CURRENT_CORRECTION with key : SINK_";
    const std::string printed = outcomeOf(read);
    EXPECT_EQ(0U, printed.find(missed + "SINK_High_CurrRange]\n" + failed + "High_CurrRange\n" +
                               failed + "Low_CurrRange\n" + missed + "SRC_High_CurrRange]\n"));
    EXPECT_EQ('1', printed.back());
    EXPECT_EQ("1.000000,2.000000,3.000000,8.000000", joinList(Doubles(values, values + 4)));
}

TEST(ConfigManager, SyncMarkBadNumbersAndUnknownPresets) {
    CConfigManager manager;
    int mark = 5;
    const std::string path = configPath("system_config.cfg");
    EXPECT_FALSE(manager.readSettingSync(mark) || manager.writeSettingSync(1));
    writeFile(path, "[FW_VERSION]\nValue=7\n");
    EXPECT_TRUE(manager.writeSettingSync(-1) && manager.readSettingSync(mark));
    EXPECT_EQ(-1, mark);
    EXPECT_EQ("[FW_VERSION]\nValue=7\n\n[SETTING_SYNC]\nSYNC=-1\n", readFile(path));

    writeFile(configPath("conf_auto_save.cfg"),
              "[CONF_STATUS]\nSTATE=1\n[CONF_ITEM_DBL]\nVOL_LVL=x\n");
    EXPECT_EQ("CConfigManager :: loadAutoSaveConfig exception : stod \n0",
              outcomeOf([&] { return manager.loadAutoSaveConfig(); }));

    sPresetBlock block{};
    block.ucOvpMode[0] = 7;
    for (const int number : {-1, 0, 6, 42}) {
        EXPECT_FALSE(manager.savePresetBlock(number, block, false) ||
                     manager.getPresetBlock(number, block, true));
    }
    EXPECT_EQ(7, block.ucOvpMode[0]);

    sPresetBlock shared{};
    EXPECT_TRUE(manager.savePresetBlock(5, block, false) &&
                manager.getPresetBlock(5, shared, false));
    EXPECT_EQ(7, shared.ucOvpMode[0]);
}

}  // namespace
