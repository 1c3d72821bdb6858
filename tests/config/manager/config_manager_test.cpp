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

    // What is written is read back, except that the other family always has two channels.
    const std::pair<Identity, const char*> identities[] = {{{1, 1}, "35_VOLTS_DEV_1CH"},
                                                           {{1, 2}, "35_VOLTS_DEV_2CH"},
                                                           {{2, 1}, "100_VOLTS_DEV_1CH"},
                                                           {{2, 2}, "100_VOLTS_DEV_2CH"},
                                                           {{3, 2}, "KOL_35_VOLTS_DEV_2CH"},
                                                           {{3, 1}, "KOL_35_VOLTS_DEV_2CH"},
                                                           {{4, 1}, ""},
                                                           {{1, 3}, ""}};
    for (const auto& [identity, text] : identities) {
        EXPECT_TRUE(waiting.setDevTypeInfo(identity.first, identity.second, false));
        EXPECT_EQ(text, textsIn(48));
        EXPECT_EQ(identity, identityOf(waiting));
        CConfigManager other;
        EXPECT_EQ(*text == '\0' ? Identity(0, 0)
                                : Identity(identity.first, *text == 'K' ? 2 : identity.second),
                  identityOf(other));
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
    const std::string failed = "failed to read section : CURRENT_CORRECTION with key : ";
    EXPECT_EQ(missed + "SINK_High_CurrRange]\n" + failed + "SINK_High_CurrRange\n" +  //
                  failed + "SINK_Low_CurrRange\n" +                                   //
                  missed + "SRC_High_CurrRange]\n" + failed + "SRC_High_CurrRange\n1",
              outcomeOf(read));
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
}

}  // namespace
