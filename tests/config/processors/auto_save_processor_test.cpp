#include "config/processors/auto_save_processor.h"

#include <gtest/gtest.h>

#include <stdexcept>

#include "config/processors/processor_test.h"

namespace {

using namespace hxl_config_handler;
using namespace support;
using CProcessor = CProcessorOn<CConfigAutoSaveProcessor>;
using Doubles = std::vector<double>;

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
        EXPECT_EQ("parse defult val \nrunning " + row[2] + " parse \n1",
                  outcomeOf([&] { return processor.LoadConfigFile(); }));
        std::string file = replaced(kDefaults, "VOL_LVL=6.000000", "VOL_LVL=" + row[3]);
        file = replaced(file, "CUR_LVL=6.100000", "CUR_LVL=" + row[4]);
        file = replaced(file, "OVP_LVL=36.500000", "OVP_LVL=" + row[5]);
        EXPECT_EQ(replaced(file, "CHF_MOD=0", "CHF_MOD=" + row[6]), readFile(kPath));
        EXPECT_EQ((Texts{row[3], row[4], "41.000000", row[5], "0.000000", "10.000000"}),
                  (Texts{numbersIn(0), numbersIn(1), numbersIn(2), numbersIn(3), numbersIn(4),
                         numbersIn(5)}));
        EXPECT_EQ((Texts{row[6], "1", "0", "1", "5", "0", "SSID", "Tarnwell"}),
                  (Texts{bytesIn(7), bytesIn(10), bytesIn(11), bytesIn(18), bytesIn(20),
                         bytesIn(22), textsIn(24), textsIn(25)}));
    }
    writeFile(kPath, "[CONF_STATUS]\nSTATE=0\n");
    CProcessor unknown(0);
    EXPECT_EQ("parse defult val \n0", outcomeOf([&] { return unknown.LoadConfigFile(); }));
    EXPECT_EQ("[CONF_STATUS]\nSTATE=0\n", readFile(kPath));
}

TEST(AutoSaveProcessor, SavedValuesGoToSharedMemoryAndNotIntoTheRecords) {
    const std::string read = "[CFileConfig::read str] FAILED to read ";
    const std::string parser = "CConfigAutoSaveMngr::parseConfigAutoSaveFile";
    const std::string badPiece = "!!!!!!!!!!! " + parser + "NewVal exception catch ";
    // A line of the file, what replaces it, the outcome, and three objects after it.
    const std::vector<Texts> rows = {
        {"=6.000000", "=1.5,2.5", "1", "1.500000,2.500000", "0", "SSID"},
        {"VOL_LVL=6.000000\n", "",
         read + "[CONF_ITEM_DBL]:[VOL_LVL]\n"
                " failed to read section : CONF_ITEM_DBL with key : VOL_LVL\n1",
         "", "0", "SSID"},
        {"OUT_MOD=0", "OUT_MOD=257", "1", "6.000000", "1", "SSID"},
        {"OUT_MOD=0", "OUT_MOD=x,1", badPiece + "1 !!!!!!!!!!!!\n1", "6.000000", "1", "SSID"},
        {"OUT_MOD=0", "OUT_MOD=2,9999999999", badPiece + "2 !!!!!!!!!!!!\n1", "6.000000", "2",
         "SSID"},
        {"=SSID", "=a,,b", "1", "6.000000", "0", "a,,b"},
        {"STATE=1", "STATE=x",
         "!!!!!!!!!!!!!! " + parser + " expception catch !!!!!!!!!!!!!!!!!!\n1", "6.000000", "0",
         "SSID"},
        {"STATE=1\n", "",
         read + "[CONF_STATUS]:[STATE]\n"
                " failed to read conf status : CONF_STATUS , STATE \n0",
         "", "", ""},
    };
    for (const Texts& row : rows) {
        SCOPED_TRACE(row[1]);
        core_utils::CSharedMemory(true);
        const std::string file = replaced(kDefaults, row[0], row[1]);
        writeFile(kPath, file);
        CProcessor processor(1);
        EXPECT_EQ(row[2], outcomeOf([&] { return processor.LoadConfigFile(); }));
        EXPECT_EQ((Texts{row[3], row[4], row[5]}), (Texts{numbersIn(0), bytesIn(16), textsIn(24)}));
        EXPECT_EQ(row[1] == "STATE=x" ? kDefaults : file, readFile(kPath));
        const auto* stored = dynamic_cast<CConfAutoSaveDataDbl*>(processor.GetConfData(0));
        EXPECT_TRUE(stored->GetKey() == "VOL_LVL" && stored->GetValues().empty());
    }

    writeFile(kPath, replaced(kDefaults, "CUR_LVL=6.100000", "CUR_LVL=1,"));
    core_utils::CSharedMemory(true);
    CProcessor processor(1);
    EXPECT_THROW(processor.LoadConfigFile(), std::invalid_argument);
    EXPECT_EQ((Texts{"6.000000", "", ""}), (Texts{numbersIn(0), numbersIn(1), bytesIn(16)}))
        << "the items after the bad one stay unloaded";
}

TEST(AutoSaveProcessor, SavingWritesOneLineAndTheRecordOrNeither) {
    writeFullFolder("conf_auto_save.cfg", kDefaults);
    const std::string full = readFile(kPath);
    CProcessor processor(1);
    CConfAutoSaveDataDbl shorter(0, Doubles{1.25});
    CConfAutoSaveDataDbl longer(0, Doubles{1.25, 2});
    EXPECT_EQ("1", outcomeOf([&] { return processor.SaveConfData(0, &shorter); }));
    EXPECT_EQ("0", outcomeOf([&] {
                  return processor.SaveConfData(6, &shorter) +
                         processor.SaveConfData(23, &shorter) +
                         processor.SaveConfData(7, &shorter) + processor.SaveConfData(0, nullptr);
              }));
    EXPECT_EQ(replaced(full, "VOL_LVL=6.000000", "VOL_LVL=1.250000"), readFile(kPath));
    EXPECT_EQ("FAILED TO WRITE ON PRIO KEY \n0",
              outcomeOf([&] { return processor.SaveConfData(0, &longer); }));
    EXPECT_EQ(Doubles{1.25},
              dynamic_cast<CConfAutoSaveDataDbl*>(processor.GetConfData(0))->GetValues());

    remove(kPath.c_str());
    CProcessor other(1);
    const std::string noFile = "failed to open dev type file config \n";
    EXPECT_EQ(noFile + noFile + "0",
              outcomeOf([&] { return other.SaveConfData(0, &shorter) + other.LoadConfigFile(); }));
}

}  // namespace
