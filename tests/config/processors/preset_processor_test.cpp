#include "config/processors/preset_processor.h"

#include "config/processors/processor_test.h"

namespace {

using namespace hxl_config_handler;
using namespace support;
using CProcessor = CProcessorOn<CConfigPresetProcessor>;

const std::string kPath = configPath("conf_preset.cfg");

// Preset 3 with a number of its own in every place, as a save into an empty file leaves it: the
// keys are written states first, and a new key becomes the first of its section.
const std::string kSection =
    "\n[INSTRUMENT_SETTING_3_100_VOLTS_DEV]\n"
    "ChFusionCurrentSet=8.000000,8.500000\nChFusionVoltageSet=7.000000,7.500000\n"
    "FuseDelay=6.000000,6.500000\nEasyRampTime=5.000000,5.500000\nOppPwrSet=4.000000,4.500000\n"
    "OvpVoltSet=3.000000,3.500000\nCurrentSet=2.000000,2.500000\nVoltageSet=1.000000,1.500000\n"
    "ChnConnMode=9,19\nCurrRange=8,18\nRemoteSense=7,17\nEasyRampState=6,16\nOvpMode=5,15\n"
    "SrcVolProtState=4,14\nSrcPwrProtState=3,13\nFuseLinkSet=2,12\nFuseState=1,11\n";
const Doubles kNumbers = {1, 1.5, 2, 2.5, 3, 3.5, 4, 4.5, 5, 5.5, 6, 6.5, 7, 7.5, 8, 8.5};
const Bytes kStates = {1, 11, 2, 12, 3, 13, 4, 14, 5, 15, 6, 16, 7, 17, 8, 18, 9, 19};

void expectPreset(const CConfData* record, const Doubles& numbers, const Bytes& states) {
    const auto& preset = dynamic_cast<const CConfPresetData&>(*record);
    EXPECT_EQ(joinList(numbers), joinList(preset.GetDblData().GetValues()));
    EXPECT_EQ(states, preset.GetSelData().GetValues());
}

TEST(PresetProcessor, LoadsWhatASaveWroteByteForByte) {
    writeFile(kPath, kSection);
    CProcessor processor(2);
    printedBy([&] { EXPECT_NE(0, processor.LoadConfigFile()); });
    expectPreset(processor.GetConfData(44), kNumbers, kStates);
    const std::unique_ptr<CConfData> preset(processor.GetSharedMemData(44));
    expectPreset(preset.get(), shared().getDoubleVector(36), shared().getByteVector(37));
    expectPreset(preset.get(), kNumbers, kStates);
    expectPreset(processor.GetConfData(46), Doubles(16), Bytes(18));

    const std::string other = "# kept\n[INSTRUMENT_SETTING_3_35_VOLTS_DEV]\nVoltageSet=9,9\n";
    const std::string changed = replaced(kSection, "VoltageSet=1.0", "VoltageSet=21.0");
    for (const Texts& files : {Texts{"", kSection}, {other + changed, other + kSection}}) {
        writeFile(kPath, files[0]);
        EXPECT_EQ("1", save(processor, 44, preset.get()));
        EXPECT_EQ(files[1], readFile(kPath));
    }
    EXPECT_EQ("0", save(processor, 44, nullptr));
    EXPECT_EQ("0", save(processor, 47, preset.get()));
}

TEST(PresetProcessor, MissingKeysAreReportedAndZeroAndFurtherTokensIgnored) {
    writeFile(kPath, "[INSTRUMENT_SETTING_1_35_VOLTS_DEV]\nVoltageSet=1.5,2.5,9\nFuseState=257\n");
    std::string expected;
    for (const char preset : std::string("12345")) {
        const auto miss = [&](const std::string& key) {
            if (preset == '1' && (key == "VoltageSet" || key == "FuseState")) return;
            expected += "[CFileConfig::read str] FAILED to read [INSTRUMENT_SETTING_";
            expected += preset + ("_35_VOLTS_DEV]:[" + key) + "]\n";
        };
        for (const auto& setting : PRESET_NUMBERS)
            miss(setting.key);
        for (const auto& setting : PRESET_STATES)
            miss(setting.key);
        miss("ChnConnMode");
    }
    CProcessor processor(3), other(3);
    EXPECT_EQ(expected + "1", load(processor));
    EXPECT_EQ(0U, numbersIn(32).find("1.500000,2.500000,0.000000,"));
    EXPECT_EQ("1,0,0,0,0,0,0,0,0,0,0,0,0,0,0,0,0,0", bytesIn(33));
    remove(kPath.c_str());
    EXPECT_EQ("!!!!!!!!!!! Failed to open Configuration Preset File \n0", load(other));
}

TEST(PresetProcessor, DefaultsGoToRecordsAndSharedMemory) {
    const Doubles rows[] = {{6.0, 6.05F, 36.5, 41.0, 10.0, 0.0, 6.0, 6.05F},
                            {20.0, 2.03F, 102.0, 41.0, 10.0, 0.0, 20.0, 2.03F},
                            {6.0, 5.1F, 36.0, 62.0, 10.0, 0.0, 6.0, 6.05F}};
    for (int devType = 1; devType <= 3; ++devType) {
        Doubles both;
        for (const double number : rows[devType - 1])
            both.insert(both.end(), {number, number});
        CProcessor processor(devType);
        EXPECT_NE(0, processor.LoadDefaults());
        EXPECT_EQ(both, shared().getDoubleVector(34)) << "single precision";
        EXPECT_EQ("0,0,0,0,1,1,1,1,1,1,0,0,0,0,0,0,0,0", bytesIn(41));
        expectPreset(processor.GetConfData(43), both, shared().getByteVector(41));
    }
}

TEST(PresetProcessor, HalfAPresetIsNoneAndAFailedSaveKeepsTheRecord) {
    writeFullFolder(kPath, kSection);
    CProcessor processor(2);
    EXPECT_EQ(nullptr, processor.GetSharedMemData(42));
    shared().setDoubleVector(32, {1.0});
    shared().setByteVector(33, {});
    EXPECT_EQ(nullptr, processor.GetSharedMemData(42));
    EXPECT_EQ(nullptr, processor.GetConfData(47));

    printedBy([&] { processor.LoadConfigFile(); });
    sPresetBlock block{};
    block.ucFuseState[0] = 100;
    block.ucFuseState[1] = 100;
    CConfPresetData preset(44, block);
    EXPECT_EQ("0", save(processor, 44, &preset));
    expectPreset(processor.GetConfData(44), kNumbers, kStates);
}

}  // namespace
