#include "config/processors/preset_processor.h"

#include "support/processor_test.h"

namespace {

using namespace hxl_config_handler;
using namespace support;
using CProcessor = CProcessorOn<CConfigPresetProcessor>;

const std::string PATH = configPath("conf_preset.cfg");

// Preset 3 with a number of its own in every place, as a save into an empty file leaves it: the
// keys are written states first, and a new key becomes the first of its section.
const std::string SECTION =
    "\n[INSTRUMENT_SETTING_3_100_VOLTS_DEV]\n"
    "ChFusionCurrentSet=8.000000,8.500000\nChFusionVoltageSet=7.000000,7.500000\n"
    "FuseDelay=6.000000,6.500000\nEasyRampTime=5.000000,5.500000\nOppPwrSet=4.000000,4.500000\n"
    "OvpVoltSet=3.000000,3.500000\nCurrentSet=2.000000,2.500000\nVoltageSet=1.000000,1.500000\n"
    "ChnConnMode=9,19\nCurrRange=8,18\nRemoteSense=7,17\nEasyRampState=6,16\nOvpMode=5,15\n"
    "SrcVolProtState=4,14\nSrcPwrProtState=3,13\nFuseLinkSet=2,12\nFuseState=1,11\n";
const Doubles NUMBERS = {1, 1.5, 2, 2.5, 3, 3.5, 4, 4.5, 5, 5.5, 6, 6.5, 7, 7.5, 8, 8.5};
const Bytes STATES = {1, 11, 2, 12, 3, 13, 4, 14, 5, 15, 6, 16, 7, 17, 8, 18, 9, 19};

void expectPreset(const CConfData* record, const Doubles& numbers, const Bytes& states) {
    const auto& preset = dynamic_cast<const CConfPresetData&>(*record);
    EXPECT_EQ(joinList(numbers), joinList(preset.GetDblData().GetValues()));
    EXPECT_EQ(states, preset.GetSelData().GetValues());
}

TEST(PresetProcessor, LoadsWhatASaveWroteByteForByte) {
    writeFile(PATH, SECTION);
    CProcessor processor(2);
    EXPECT_EQ('1', load(processor).back());
    expectPreset(processor.GetConfData(44), NUMBERS, STATES);
    expectPreset(processor.GetConfData(46), Doubles(16), Bytes(18));
    const std::unique_ptr<CConfData> preset(processor.GetSharedMemData(44));
    expectPreset(preset.get(), NUMBERS, STATES);
    EXPECT_EQ(NUMBERS, shared().getDoubleVector(36));
    EXPECT_EQ(STATES, shared().getByteVector(37));

    const std::string other = "# kept\n[INSTRUMENT_SETTING_3_35_VOLTS_DEV]\nVoltageSet=9,9\n";
    const std::string changed = replaced(SECTION, "VoltageSet=1.0", "VoltageSet=21.0");
    writeFile(PATH, "");
    EXPECT_EQ("1", save(processor, 44, preset.get()));
    EXPECT_EQ(SECTION, readFile(PATH));
    writeFile(PATH, other + changed);
    EXPECT_EQ("1", save(processor, 44, preset.get()));
    EXPECT_EQ(other + SECTION, readFile(PATH));
    EXPECT_EQ("0", save(processor, 44, nullptr));
    EXPECT_EQ("0", save(processor, 47, preset.get()));
}

TEST(PresetProcessor, MissingKeysAreReportedAndZeroAndFurtherTokensIgnored) {
    std::string file = replaced(SECTION, "3_100", "1_35");
    for (const char* key : {"OppPwrSet", "RemoteSense", "ChnConnMode"})
        file = replaced(file, std::string(key) + "=", "#");
    writeFile(PATH, replaced(replaced(file, "=1.000000", "=1.5,2"), "OvpMode=5", "OvpMode=257"));
    CProcessor processor(3), other(3);
    const std::string missed =
        "[CFileConfig::read str] FAILED to read [INSTRUMENT_SETTING_1_35_"
        "VOLTS_DEV]:[";
    EXPECT_EQ(0U, load(processor).find(missed + "OppPwrSet]\n" + missed + "RemoteSense]\n" +
                                       missed + "ChnConnMode]\n" + missed + "ChnConnMode]\n" +
                                       replaced(missed, "1_35", "2_35") + "VoltageSet]\n"));
    EXPECT_EQ(
        0U, numbersIn(32).find("1.500000,2.000000,2.000000,2.500000,3.000000,3.500000,0.000000,"));
    EXPECT_EQ("1,11,2,12,3,13,4,14,1,15,6,16,0,0,8,18,0,0", bytesIn(33));
    remove(PATH.c_str());
    EXPECT_EQ("!!!!!!!!!!! Failed to open Configuration Preset File \n0", load(other));
}

TEST(PresetProcessor, DefaultsReplaceEveryPresetUnlessTheTypeIsUnknown) {
    writeFile(PATH, replaced(SECTION, "100_", "35_"));
    CProcessor unknown(0), known(3);
    load(unknown);
    shared().setDoubleVector(36, {});
    unknown.LoadDefaults();
    expectPreset(unknown.GetConfData(44), NUMBERS, STATES);
    EXPECT_EQ(NUMBERS, shared().getDoubleVector(36)) << "published as they are";

    load(known);
    known.LoadDefaults();
    const Doubles numbers = shared().getDoubleVector(36);
    EXPECT_EQ((Doubles{6.0, 6.0, 5.1F, 5.1F}), Doubles(numbers.begin(), numbers.begin() + 4))
        << "single precision";
    expectPreset(known.GetConfData(44), numbers, shared().getByteVector(41));
    EXPECT_EQ("0,0,0,0,1,1,1,1,1,1,0,0,0,0,0,0,0,0", bytesIn(37));
}

TEST(PresetProcessor, HalfAPresetIsNoneAndAFailedSaveKeepsTheRecord) {
    writeFullFolder(PATH, SECTION);
    CProcessor processor(2);
    EXPECT_EQ(nullptr, processor.GetSharedMemData(42));
    shared().setDoubleVector(32, {1.0});
    shared().setByteVector(33, {});
    EXPECT_EQ(nullptr, processor.GetSharedMemData(42));
    EXPECT_EQ(nullptr, processor.GetConfData(47));

    load(processor);
    sPresetBlock block{};
    block.ucFuseState[1] = 100;
    CConfPresetData preset(44, block);
    EXPECT_EQ("0", save(processor, 44, &preset));
    expectPreset(processor.GetConfData(44), NUMBERS, STATES);
}

}  // namespace
