#include "config/processors/auto_save_processor.h"

#include <algorithm>

#include "config/records/auto_save_data.h"
#include "support/processor_test.h"

namespace {

using namespace support;
using CProcessor = CProcessorOn<CConfigAutoSaveProcessor>;

const std::string PATH = configPath("conf_auto_save.cfg");
const std::string FRESH = "[CONF_STATUS]\nSTATE=0\n";

std::string recordOf(CProcessor& processor, int id) {
    return printedBy([&] { processor.GetConfData(id)->PrintConfData(); });
}

// The file as a unit of `devType` seeds it, with every item.
std::string seededFile(int devType = 1, const std::string& state = "0") {
    writeFile(PATH, "[CONF_STATUS]\nSTATE=" + state + "\n");
    CProcessor processor(devType);
    EXPECT_EQ('1', load(processor).back());
    return readFile(PATH);
}

TEST(AutoSaveProcessor, FreshFileSeedsTheDefaultsOfTheVariant) {
    const struct {
        int devType;
        std::string state, current, channels;
    } rows[] = {{1, "0", "6.100000", "0"}, {2, "256", "2.030000", "0"}, {3, "00", "5.100000", "2"}};
    for (const auto& row : rows) {
        const std::string file = seededFile(row.devType, row.state);
        EXPECT_EQ(25, std::count(file.begin(), file.end(), '=')) << "the mark and 24 items";
        EXPECT_EQ(0U, file.find("[CONF_STATUS]\nSTATE=1\n"));
        EXPECT_TRUE(has(file, "\nCUR_LVL=" + row.current + "\n")) << file;
        EXPECT_EQ(row.current, numbersIn(1));
        EXPECT_EQ(row.channels, bytesIn(7));
    }
    CProcessor known(1);
    EXPECT_EQ(1, known.LoadDefaults());
    EXPECT_EQ("1", load(known)) << "it has closed the file";
    writeFile(PATH, FRESH);
    CProcessor unknown(0);
    EXPECT_EQ("parse defult val \n0", load(unknown));
    EXPECT_EQ(FRESH, readFile(PATH));
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
        writeFile(PATH, file);
        CProcessor processor(1);
        EXPECT_EQ(row.outcome, load(processor));
        EXPECT_EQ(row.voltage, numbersIn(0));
        EXPECT_EQ(row.mode, bytesIn(16));
        EXPECT_EQ(row.ssid, textsIn(24));
        EXPECT_EQ(row.outcome == badState ? seeded : file, readFile(PATH));
        EXPECT_EQ("CNFKEY:VOL_LVL CONF INDEX 0 \n\n\n\n ", recordOf(processor, 0));
        EXPECT_EQ("CNFKEY:OUT_MOD CONF INDEX 16 \n\n ", recordOf(processor, 16));
    }
}

TEST(AutoSaveProcessor, SavingWritesOneLineAndTheRecordOrNeither) {
    const std::string seeded = seededFile();
    CProcessor processor(1), other(1);
    CConfAutoSaveDataDbl record(0, Doubles{1.25}), refused(0, Doubles());
    EXPECT_EQ("1", save(processor, 0, &record));
    for (const int id : {6, 7, 23, 26})
        EXPECT_EQ("0", save(processor, id, &record)) << id;
    EXPECT_EQ("0", save(processor, 0, nullptr));
    EXPECT_EQ(replaced(seeded, "VOL_LVL=6.000000", "VOL_LVL=1.250000"), readFile(PATH));
    EXPECT_EQ("FAILED TO WRITE ON PRIO KEY \n0", save(processor, 0, &refused));
    EXPECT_EQ("CNFKEY:VOL_LVL CONF INDEX 0 \n\n1.250000 \n\n ", recordOf(processor, 0));

    remove(PATH.c_str());
    EXPECT_EQ("failed to open dev type file config \n0", save(other, 0, &record));
    EXPECT_EQ("failed to open dev type file config \n0", load(other));
    CAbsConfigProcesor::mpSharedMemoryMngr = nullptr;
    EXPECT_EQ("mpSharedMemoryMngr No Valid Pointer \n0",
              outcomeOf([&] { return other.SetSharedMemData(0, &record); }));
    EXPECT_EQ(nullptr, other.GetSharedMemData(0));
}

}  // namespace
