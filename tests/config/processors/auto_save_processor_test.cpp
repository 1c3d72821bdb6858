#include "config/processors/auto_save_processor.h"

#include <stdexcept>

#include "config/processors/processor_test.h"
#include "config/records/auto_save_data.h"

namespace {

using namespace hxl_config_handler;
using namespace support;
using CProcessor = CProcessorOn<CConfigAutoSaveProcessor>;

const std::string kPath = configPath("conf_auto_save.cfg");

// The file as the defaults of device type 1 leave it: a new key becomes the first of its section.
const std::string kDefaults =
    "[CONF_STATUS]\nSTATE=1\n\n[CONF_ITEM_DBL]\nRMP_TME=10.000000\nFUS_DLY=0.000000\n"
    "OVP_LVL=36.500000\nOPP_LVL=41.000000\nCUR_LVL=6.100000\nVOL_LVL=6.000000\n\n"
    "[CONF_ITEM_SEL]\nWLAN_AC=0\nKEY_STE=0\nDSP_BRT=5\nUSB_MOD=0\nBPR_STE=1\nNET_STE=0\n"
    "OUT_MOD=0\nDVM_STE=0\nRMP_STE=0\nFUS_STE=0\nLCR_MOD=0\nSNS_STE=0\nOVP_MOD=1\nOVP_STE=1\n"
    "OPP_STE=1\nCHF_MOD=0\n\n[CONF_ITEM_STR]\nWLAN_PASS=Tarnwell\nWLAN_SSID=SSID\n";

TEST(AutoSaveProcessor, FreshFileSeedsTheDefaultsOfTheVariant) {
    const std::vector<Texts> rows = {
        {"1", "0", "ZEV 35V", "6.000000", "6.100000", "36.500000", "0"},
        {"2", "256", "ZEV 100V", "20.000000", "2.030000", "102.000000", "0"},
        {"3", "00", "KOL 35V", "6.000000", "5.100000", "36.000000", "2"},
    };
    for (const Texts& row : rows) {
        writeFile(kPath, "[CONF_STATUS]\nSTATE=" + row[1] + "\n");
        CProcessor processor(std::stoi(row[0]));
        EXPECT_EQ("parse defult val \nrunning " + row[2] + " parse \n1", load(processor));
        std::string file = replaced(kDefaults, "VOL_LVL=6.000000", "VOL_LVL=" + row[3]);
        file = replaced(file, "CUR_LVL=6.100000", "CUR_LVL=" + row[4]);
        file = replaced(file, "OVP_LVL=36.500000", "OVP_LVL=" + row[5]);
        EXPECT_EQ(replaced(file, "CHF_MOD=0", "CHF_MOD=" + row[6]), readFile(kPath));
        std::string numbers, bytes;
        for (int id = 0; id <= 5; ++id)
            numbers += numbersIn(id) + ' ';
        for (int id = 7; id <= 22; ++id)
            bytes += bytesIn(id);
        EXPECT_EQ(row[3] + ' ' + row[4] + " 41.000000 " + row[5] + " 0.000000 10.000000 ", numbers);
        EXPECT_EQ(row[6] + "111000000010500", bytes);
        EXPECT_EQ("SSID Tarnwell", textsIn(24) + ' ' + textsIn(25));
    }
    writeFile(kPath, "[CONF_STATUS]\nSTATE=0\n");
    CProcessor unknown(0);
    EXPECT_EQ("parse defult val \n0", load(unknown));
    EXPECT_EQ("[CONF_STATUS]\nSTATE=0\n", readFile(kPath));
}

TEST(AutoSaveProcessor, SavedValuesGoToSharedMemoryAndNotIntoTheRecords) {
    const std::string read = "[CFileConfig::read str] FAILED to read ";
    const std::string noVoltage = read +
                                  "[CONF_ITEM_DBL]:[VOL_LVL]\n failed to read section : "
                                  "CONF_ITEM_DBL with key : VOL_LVL\n1";
    const std::string noState =
        read + "[CONF_STATUS]:[STATE]\n failed to read conf status : CONF_STATUS , STATE \n0";
    const std::string parser = "CConfigAutoSaveMngr::parseConfigAutoSaveFile";
    const std::string badState =
        "!!!!!!!!!!!!!! " + parser + " expception catch !!!!!!!!!!!!!!!!!!\n1";
    const std::string badPiece = "!!!!!!!!!!! " + parser + "NewVal exception catch ";
    // A part of the file, what replaces it, the outcome, and three objects after it.
    const std::vector<Texts> rows = {
        {"=6.000000", "=1.5,2.5", "1", "1.500000,2.500000", "0", "SSID"},
        {"VOL_LVL=6.000000\n", "", noVoltage, "", "0", "SSID"},
        {"OUT_MOD=0", "OUT_MOD=257", "1", "6.000000", "1", "SSID"},
        {"OUT_MOD=0", "OUT_MOD=x,1", badPiece + "1 !!!!!!!!!!!!\n1", "6.000000", "1", "SSID"},
        {"OUT_MOD=0", "OUT_MOD=2,", badPiece + "2 !!!!!!!!!!!!\n1", "6.000000", "2", "SSID"},
        {"=SSID", "=a,,b", "1", "6.000000", "0", "a,,b"},
        {"STATE=1", "STATE=x", badState, "6.000000", "0", "SSID"},
        {"STATE=1\n", "", noState, "", "", ""},
    };
    for (const Texts& row : rows) {
        core_utils::CSharedMemory(true);
        const std::string file = replaced(kDefaults, row[0], row[1]);
        writeFile(kPath, file);
        CProcessor processor(1);
        EXPECT_EQ(row[2], load(processor));
        EXPECT_EQ((Texts{row[3], row[4], row[5]}), (Texts{numbersIn(0), bytesIn(16), textsIn(24)}));
        EXPECT_EQ(row[1] == "STATE=x" ? kDefaults : file, readFile(kPath));
        EXPECT_EQ("CNFKEY:VOL_LVL CONF INDEX 0 \n\n\n\n ",
                  printedBy([&] { processor.GetConfData(0)->PrintConfData(); }));
    }

    writeFile(kPath, replaced(kDefaults, "CUR_LVL=6.100000", "CUR_LVL=1,"));
    core_utils::CSharedMemory(true);
    CProcessor processor(1);
    EXPECT_THROW(processor.LoadConfigFile(), std::invalid_argument);
    EXPECT_EQ("6.000000", numbersIn(0) + numbersIn(1) + bytesIn(16)) << "unloaded from there on";
}

TEST(AutoSaveProcessor, SavingWritesOneLineAndTheRecordOrNeither) {
    writeFullFolder(kPath, kDefaults);
    const std::string full = readFile(kPath);
    CProcessor processor(1);
    CConfAutoSaveDataDbl shorter(0, Doubles{1.25}), longer(0, Doubles{1.25, 2});
    EXPECT_EQ("1", save(processor, 0, &shorter));
    for (const int id : {6, 7, 23, 26})
        EXPECT_EQ("0", save(processor, id, &longer)) << id;
    EXPECT_EQ("0", save(processor, 0, nullptr));
    EXPECT_EQ(replaced(full, "VOL_LVL=6.000000", "VOL_LVL=1.250000"), readFile(kPath));
    EXPECT_EQ("FAILED TO WRITE ON PRIO KEY \n0", save(processor, 0, &longer));
    EXPECT_EQ("CNFKEY:VOL_LVL CONF INDEX 0 \n\n1.250000 \n\n ",
              printedBy([&] { processor.GetConfData(0)->PrintConfData(); }));

    remove(kPath.c_str());
    CProcessor other(1);
    EXPECT_EQ("failed to open dev type file config \n0", save(other, 0, &shorter));
    EXPECT_EQ("failed to open dev type file config \n0", load(other));

    CAbsConfigProcesor::mpSharedMemoryMngr = nullptr;
    EXPECT_EQ("mpSharedMemoryMngr No Valid Pointer \n0",
              outcomeOf([&] { return other.SetSharedMemData(0, &shorter); }));
    EXPECT_EQ(nullptr, other.GetSharedMemData(0));
}

}  // namespace
