#include "config/processors/preset_processor.h"

#include "support/processor_test.h"

namespace {

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

const std::string LOADED = joinList(NUMBERS) + ' ' + joinList(STATES);

std::string textOf(const CConfData* record) {
    const auto& preset = dynamic_cast<const CConfPresetData&>(*record);
    return joinList(preset.GetDblData().GetValues()) + ' ' +
           joinList(preset.GetSelData().GetValues());
}

TEST(PresetProcessor, LoadsWhatASaveWroteByteForByte) {
    writeFile(PATH, SECTION);
    CProcessor processor(2);
    shared().setDoubleVector(36, {1.0});
    EXPECT_EQ(nullptr, processor.GetSharedMemData(44)) << "half a preset is none";
    EXPECT_EQ('1', load(processor).back());
    EXPECT_EQ(LOADED, textOf(processor.GetConfData(44)));
    EXPECT_EQ(LOADED, presetIn(3));
    const std::unique_ptr<CConfData> preset(processor.GetSharedMemData(44));
    EXPECT_EQ(LOADED, textOf(preset.get()));

    const std::string other = "# kept\n[INSTRUMENT_SETTING_3_35_VOLTS_DEV]\nVoltageSet=9,9\n";
    for (const std::string& before : {std::string(), other}) {
        writeFile(PATH, before + (before.empty() ? "" : replaced(SECTION, "eSet=1", "eSet=21")));
        EXPECT_EQ("1", save(processor, 44, preset.get()));
        EXPECT_EQ(before + SECTION, readFile(PATH));
    }
    EXPECT_EQ("0", save(processor, 44, nullptr));
    EXPECT_EQ("0", save(processor, 47, preset.get()));
}

TEST(PresetProcessor, MissingKeysAreReportedAndZeroAndFurtherTokensIgnored) {
    std::string file = replaced(SECTION, "3_100", "1_35");
    for (const char* key : {"OppPwrSet", "RemoteSense", "ChnConnMode"})
        file = replaced(file, std::string(key) + "=", "#");
    writeFile(PATH, replaced(replaced(file, "=1.000000", "=1.5,2"), "OvpMode=5", "OvpMode=257"));
    CProcessor processor(3);
    std::string expected;
    for (const char* place : {"1_35_VOLTS_DEV]:[OppPwrSet]", "1_35_VOLTS_DEV]:[RemoteSense]",
                              "1_35_VOLTS_DEV]:[ChnConnMode]", "1_35_VOLTS_DEV]:[ChnConnMode]",
                              "2_35_VOLTS_DEV]:[VoltageSet]"}) {
        expected += missed("str", std::string("[INSTRUMENT_SETTING_") + place);
    }
    EXPECT_EQ(0U, load(processor).find(expected));
    EXPECT_EQ(0U, numbersIn(32).find("1.500000,2.000000,2.000000,2.500000,3.000000,3.500000,0.0"));
    EXPECT_EQ("1,11,2,12,3,13,4,14,1,15,6,16,0,0,8,18,0,0", bytesIn(33));
}

TEST(PresetProcessor, DefaultsReplaceEveryPresetUnlessTheTypeIsUnknown) {
    CProcessor unknown(0), first(1), known(3);
    EXPECT_EQ("!!!!!!!!!!! Failed to open Configuration Preset File \n0", load(unknown));
    writeFile(PATH, replaced(SECTION, "100_", "35_"));
    load(unknown);
    shared().setDoubleVector(36, {});
    unknown.LoadDefaults();
    EXPECT_EQ(LOADED, textOf(unknown.GetConfData(44)));
    EXPECT_EQ(LOADED, presetIn(3)) << "published as they are";

    first.LoadDefaults();
    EXPECT_EQ(0U, presetIn(3).find("6.000000,6.000000,6.050000,"));

    load(known);
    known.LoadDefaults();
    EXPECT_EQ(0U, presetIn(3).find("6.000000,6.000000,5.100000,5.100000,36.000000,"));
    EXPECT_EQ(presetIn(5), textOf(known.GetConfData(44)));
}

}  // namespace
