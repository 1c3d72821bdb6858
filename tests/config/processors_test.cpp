#include <algorithm>
#include <filesystem>

#include "config/processors/auto_save_processor.h"
#include "config/processors/dev_type_processor.h"
#include "config/processors/dev_var_system_processor.h"
#include "config/processors/preset_processor.h"
#include "config/processors/system_processor.h"
#include "config/records/auto_save_data.h"
#include "config/records/chn_fw_version_data.h"
#include "config/records/current_sharing_data.h"
#include "config/records/dev_type_info_data.h"
#include "config/records/service_setting_data.h"
#include "support/processor_test.h"

namespace {

using namespace support;
namespace fs = std::filesystem;
using CAutoSave = CProcessorOn<CConfigAutoSaveProcessor>;
using CPreset = CProcessorOn<CConfigPresetProcessor>;
using CSystem = CProcessorOn<CConfigSystemProcessor>;
using CDevVarSystem = CProcessorOn<CConfigDevVarSystemProcessor>;
using CDevType = CProcessorOn<CConfigDevTypeProcessor>;

const std::string AUTO_SAVE = configPath("conf_auto_save.cfg");
const std::string FRESH = "[CONF_STATUS]\nSTATE=0\n";

std::string recordOf(CAutoSave& processor, int id) {
    return printedBy([&] { processor.GetConfData(id)->PrintConfData(); });
}

// The file as a unit of `devType` seeds it, with every item.
std::string seededFile(int devType = 1, const std::string& state = "0",
                       const std::string& model = "ZEV 35V") {
    writeFile(AUTO_SAVE, "[CONF_STATUS]\nSTATE=" + state + "\n");
    CAutoSave processor(devType);
    EXPECT_EQ("parse defult val \nrunning " + model + " parse \n1", load(processor));
    return readFile(AUTO_SAVE);
}

TEST(AutoSaveProcessor, FreshFileSeedsTheDefaultsOfTheVariant) {
    const struct {
        int devType;
        std::string state, model, current, channels;
    } rows[] = {{1, "0", "ZEV 35V", "6.100000", "0"},
                {2, "256", "ZEV 100V", "2.030000", "0"},
                {3, "00", "KOL 35V", "5.100000", "2"}};
    for (const auto& row : rows) {
        const std::string file = seededFile(row.devType, row.state, row.model);
        EXPECT_EQ(25, std::count(file.begin(), file.end(), '=')) << "the mark and 24 items";
        EXPECT_EQ(0U, file.find("[CONF_STATUS]\nSTATE=1\n"));
        EXPECT_TRUE(has(file, "\nCUR_LVL=" + row.current + "\n")) << file;
        EXPECT_EQ(row.current, numbersIn(1));
        EXPECT_EQ(row.channels, bytesIn(7));
    }
    CAutoSave known(1);
    EXPECT_EQ(1, known.LoadDefaults());
    EXPECT_EQ("1", load(known)) << "it has closed the file";
    writeFile(AUTO_SAVE, FRESH);
    CAutoSave unknown(0);
    EXPECT_EQ("parse defult val \n0", load(unknown));
    EXPECT_EQ(FRESH, readFile(AUTO_SAVE));
}

TEST(AutoSaveProcessor, SavedValuesGoToSharedMemoryAndNotIntoTheRecords) {
    const std::string noVoltage = missed("str", "[CONF_ITEM_DBL]:[VOL_LVL]") +
                                  " failed to read section : CONF_ITEM_DBL with key : VOL_LVL\n1";
    const std::string noState = missed("str", "[CONF_STATUS]:[STATE]") +
                                " failed to read conf status : CONF_STATUS , STATE \n0";
    const std::string parser = "!!!!!!!!!!! CConfigAutoSaveMngr::parseConfigAutoSaveFile";
    const std::string badState = "!!!" + parser + " expception catch !!!!!!!!!!!!!!!!!!\n1";
    const std::string badPiece = parser + "NewVal exception catch ";
    const struct {
        std::string part, replacement, outcome;
        std::string voltage = "6.000000", mode = "0", ssid = "SSID";
    } rows[] = {
        {"L_LVL=6.000000", "L_LVL=1.5,2.5", "1", "1.500000,2.500000"},
        {"VOL_LVL=6.000000\n", "", noVoltage, ""},
        {"CUR_LVL=6.100000", "CUR_LVL=1,", "thrown", "6.000000", "", ""},
        {"OUT_MOD=0", "OUT_MOD=257", "1", "6.000000", "1"},
        {"OUT_MOD=0", "OUT_MOD=x,1", badPiece + "1 !!!!!!!!!!!!\n1", "6.000000", "1"},
        {"OUT_MOD=0", "OUT_MOD=2,", badPiece + "2 !!!!!!!!!!!!\n1", "6.000000", "2"},
        {"=SSID", "=a,,b", "1", "6.000000", "0", "a,,b"},
        {"STATE=1", "STATE=x", badState},
        {"STATE=1\n", "", noState, "", "", ""},
    };
    const std::string seeded = seededFile();
    for (const auto& row : rows) {
        SCOPED_TRACE(row.part + row.replacement);
        core_utils::CSharedMemory(true);
        const std::string file = replaced(seeded, row.part, row.replacement);
        writeFile(AUTO_SAVE, file);
        CAutoSave processor(1);
        EXPECT_EQ(row.outcome, load(processor));
        EXPECT_EQ(row.voltage, numbersIn(0));
        EXPECT_EQ(row.mode, bytesIn(16));
        EXPECT_EQ(row.ssid, textsIn(24));
        EXPECT_EQ(row.outcome == badState ? seeded : file, readFile(AUTO_SAVE));
        EXPECT_EQ("CNFKEY:VOL_LVL CONF INDEX 0 \n\n\n\n ", recordOf(processor, 0));
        EXPECT_EQ("CNFKEY:OUT_MOD CONF INDEX 16 \n\n ", recordOf(processor, 16));
    }
}

TEST(AutoSaveProcessor, SavingWritesOneLineAndTheRecordOrNeither) {
    const std::string seeded = seededFile();
    CAutoSave processor(1), other(1);
    CConfAutoSaveDataDbl record(0, Doubles{1.25}), refused(0, Doubles());
    EXPECT_EQ("1", save(processor, 0, &record));
    for (const int id : {6, 7, 23, 26})
        EXPECT_EQ("0", save(processor, id, &record)) << id;
    EXPECT_EQ("0", save(processor, 0, nullptr));
    EXPECT_EQ(replaced(seeded, "VOL_LVL=6.000000", "VOL_LVL=1.250000"), readFile(AUTO_SAVE));
    EXPECT_EQ("FAILED TO WRITE ON PRIO KEY \n0", save(processor, 0, &refused));
    EXPECT_EQ("CNFKEY:VOL_LVL CONF INDEX 0 \n\n1.250000 \n\n ", recordOf(processor, 0));

    remove(AUTO_SAVE.c_str());
    EXPECT_EQ("failed to open dev type file config \n0", save(other, 0, &record));
    EXPECT_EQ("failed to open dev type file config \n0", load(other));
    CAbsConfigProcesor::mpSharedMemoryMngr = nullptr;
    EXPECT_EQ("mpSharedMemoryMngr No Valid Pointer \n0",
              outcomeOf([&] { return other.SetSharedMemData(0, &record); }));
    EXPECT_EQ(nullptr, other.GetSharedMemData(0));
}

const std::string PRESET = configPath("conf_preset.cfg");

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
    writeFile(PRESET, SECTION);
    CPreset processor(2);
    shared().setDoubleVector(36, {1.0});
    EXPECT_EQ(nullptr, processor.GetSharedMemData(44)) << "half a preset is none";
    EXPECT_EQ('1', load(processor).back());
    EXPECT_EQ(LOADED, textOf(processor.GetConfData(44)));
    EXPECT_EQ(LOADED, presetIn(3));
    const std::unique_ptr<CConfData> preset(processor.GetSharedMemData(44));
    EXPECT_EQ(LOADED, textOf(preset.get()));

    const std::string other = "# kept\n[INSTRUMENT_SETTING_3_35_VOLTS_DEV]\nVoltageSet=9,9\n";
    for (const std::string& before : {std::string(), other}) {
        writeFile(PRESET, before + (before.empty() ? "" : replaced(SECTION, "eSet=1", "eSet=21")));
        EXPECT_EQ("1", save(processor, 44, preset.get()));
        EXPECT_EQ(before + SECTION, readFile(PRESET));
    }
    EXPECT_EQ("0", save(processor, 44, nullptr));
    EXPECT_EQ("0", save(processor, 47, preset.get()));
}

TEST(PresetProcessor, MissingKeysAreReportedAndZeroAndFurtherTokensIgnored) {
    std::string file = replaced(SECTION, "3_100", "1_35");
    for (const char* key : {"OppPwrSet", "RemoteSense", "ChnConnMode"})
        file = replaced(file, std::string(key) + "=", "#");
    writeFile(PRESET, replaced(replaced(file, "=1.000000", "=1.5,2"), "OvpMode=5", "OvpMode=257"));
    CPreset processor(3);
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

// What the defaults of a known type are shows in the test of the shipped files.
TEST(PresetProcessor, DefaultsOfAnUnknownTypeAreWhatIsLoaded) {
    CPreset unknown(0);
    EXPECT_EQ("!!!!!!!!!!! Failed to open Configuration Preset File \n0", load(unknown));
    writeFile(PRESET, replaced(SECTION, "100_", "35_"));
    load(unknown);
    shared().setDoubleVector(36, {});
    unknown.LoadDefaults();
    EXPECT_EQ(LOADED, textOf(unknown.GetConfData(44)));
    EXPECT_EQ(LOADED, presetIn(3));
}

TEST(SystemProcessor, PublishesSharingAndVersionOrTheirDefaults) {
    CSystem processor(1);
    EXPECT_EQ("0", load(processor)) << "no file";
    writeFile(configPath("system_config.cfg"),
              "[CURRENT_SHARING_W1]\nDOMINANT_PART=1.5\nCONVERGE_POINT=-4\n[FW_VERSION]\n");
    EXPECT_EQ(missed("int", "[CURRENT_SHARING_W1]:[SUPPORTING_PART]") +
                  missed("int", "[CURRENT_SHARING_W1]:[MID_POINT]") +
                  missed("str", "[FW_VERSION]:[Value]") + '1',
              load(processor));
    EXPECT_EQ("1.500000,0.000000,0.000000,-4.000000 VERSION", numbersIn(29) + ' ' + textsIn(30));
    EXPECT_EQ(nullptr, processor.GetSharedMemData(31));
    const auto& sharing = dynamic_cast<CConfCurrentSharingData&>(*processor.GetConfData(29));
    EXPECT_EQ(-4, sharing.GetNumbers()[3]);
    EXPECT_EQ("VERSION",
              dynamic_cast<CConfChnFwVersionData&>(*processor.GetConfData(30)).GetText());
}

// What is published for a missing key shows in the test of the shipped files.
TEST(DevVarSystemProcessor, PublishesTheSectionsOfItsVariantInRecordOrder) {
    const std::string path = configPath("dev_var_system_config.cfg");
    const std::string variants[] = {"", "_35V_DEV", "_100V_DEV", "_35V_DEV"};
    for (int devType = 0; devType <= 3; ++devType) {
        SCOPED_TRACE(devType);
        writeFile(path, "[SETTING_SERVICE" + variants[devType] + "]\nOTP=0.1\n[DRIFT_CORRECTION" +
                            variants[devType] +
                            "]\nTO_APPLY=1\nCORRECTION_FACTOR=2\nMAX_TEMP=3\nMAX_CURRENT=4\n"
                            "MINIMUM_VOLTAGE_ERROR=5\nMAXIMUM_VOLTAGE_ERROR=6\n"
                            "CORRECTION_FACTOR_DIVISOR=7\nSUB_VOLTAGE=8\n");
        CDevVarSystem processor(devType);
        EXPECT_EQ('1', load(processor).back());
        EXPECT_EQ((Doubles{1, 2, 7, 3, 4, 5, 6, 8}), shared().getDoubleVector(28));
        EXPECT_EQ((Doubles{0.1F, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}), shared().getDoubleVector(27));
    }
    CDevVarSystem processor(2);
    const std::string shm = "get Shared mem data drift DevVarSysProc";
    EXPECT_EQ(shm + '\n' + shm + " 1\n" + shm + " vctr size : 8 \n" + shm + " 2\n",
              printedBy([&] { delete processor.GetSharedMemData(28); }));
    EXPECT_EQ(shm + "\n0", outcomeOf([&] { return processor.GetSharedMemData(29); }));
}

// Every line of a save that succeeds or cannot open its file is in the test of the daemon.
TEST(DevTypeProcessor, PublishesOnlyWhatTheFileHolds) {
    const std::string path = configPath("devtype_info.cfg");
    CDevType processor(1);
    CConfDevTypeInfoData record(48, "new");
    EXPECT_EQ("WRITING TO CONFIG FILE DEV TYPE :new \nFile COnfig EMpty \n0",
              save(processor, 48, &record));
    writeFile(path, "[PROCESSED_DEV_INFORMATION]\n");
    EXPECT_EQ(missed("str", "[PROCESSED_DEV_INFORMATION]:[DEV_INFORMATION]") + "bReul : 0 \n0",
              load(processor));
    EXPECT_EQ("", textsIn(48));
    EXPECT_EQ("0", save(processor, 48, nullptr));
    const std::string first = save(processor, 48, &record);
    EXPECT_EQ(first, save(processor, 48, &record)) << "all lines again";
    EXPECT_EQ("[PROCESSED_DEV_INFORMATION]\nDEV_INFORMATION=new\n", readFile(path));
    EXPECT_EQ("1", load(processor));
    EXPECT_EQ("new", textsIn(48));
}

template <typename T>
bool isEqual(const std::vector<T>& mine, const std::vector<T>& others) {
    return CConfAutoSaveData<T>(1, mine).IsEqual(CConfAutoSaveData<T>(2, others));
}

TEST(Records, DoublesAndTextsCompareTheOtherRecordsPrefixBytesCompareAll) {
    EXPECT_TRUE(isEqual(Doubles{1, 2}, {1}));
    EXPECT_FALSE(isEqual(Doubles{1, 2}, {1, 2, 3}));
    EXPECT_FALSE(isEqual(Doubles{1, 2}, {1, 2.5}));
    EXPECT_TRUE(isEqual(Texts{"SSID"}, {}));
    EXPECT_FALSE(isEqual(Bytes{1, 0}, {1}));
}

TEST(Records, CompositeNumbersAreZeroBelowTheNeededCount) {
    const auto of = [](std::size_t count) { return CConfAutoSaveDataDbl(1, Doubles(count, 1.1)); };
    EXPECT_EQ(0.0F, CConfServiceSetingData(27, of(10)).GetNumbers()[0]);
    EXPECT_EQ(1.1F, CConfServiceSetingData(27, of(12)).GetNumbers()[10]);
    EXPECT_EQ(0.0, CConfCurrentSharingData(29, of(3)).GetNumbers()[0]);
    EXPECT_EQ(1.1, CConfCurrentSharingData(29, of(5)).GetNumbers()[4]);
}

// The files that a board is delivered with, loaded as that board does.
TEST(ShippedFiles, LoadWithoutAFailureLineAndHoldTheDefaults) {
    constexpr auto OPTIONS = fs::copy_options::recursive | fs::copy_options::overwrite_existing;
    for (int devType = 0; devType <= 3; ++devType) {
        SCOPED_TRACE(devType);
        fs::copy(TEST_DEPLOY_DIR "/etc/quenvel/config/system", configPath(""), OPTIONS);
        if (devType == 3) fs::copy(TEST_DEPLOY_DIR "/families/KOL", configPath(""), OPTIONS);
        CAutoSave autoSave(devType);
        EXPECT_EQ(0U, load(autoSave).find("parse defult val \n"));
        CSystem system(devType);
        EXPECT_EQ("1", load(system));

        CPreset preset(devType), defaults(devType);
        EXPECT_EQ("1", load(preset));
        const auto presets = [] {
            return presetIn(1) + presetIn(2) + presetIn(3) + presetIn(4) + presetIn(5);
        };
        const std::string loaded = presets();
        defaults.LoadDefaults();
        EXPECT_EQ(devType != 0, presets() == loaded);

        CDevVarSystem variant(devType), bare(devType);
        EXPECT_EQ("CConfigDevVarSystemProcessor dev type : " + std::to_string(devType) +
                      " chn cnt : 2 \n1",
                  load(variant));
        EXPECT_EQ(0U, numbersIn(27).find("85.000000,"));
        const std::string drift = numbersIn(28);
        writeFile(configPath("dev_var_system_config.cfg"), "");
        load(bare);
        EXPECT_EQ(numbersIn(28), drift);
    }
}

}  // namespace
