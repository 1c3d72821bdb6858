// The files that a board is delivered with, loaded as that board does.
#include <filesystem>

#include "config/processors/auto_save_processor.h"
#include "config/processors/dev_var_system_processor.h"
#include "config/processors/preset_processor.h"
#include "config/processors/system_processor.h"
#include "support/processor_test.h"

namespace {

using namespace hxl_config_handler;
using namespace support;
namespace fs = std::filesystem;

struct sBoard {
    const char* family;
    int devType;
    std::string model;  // as the auto-save load names it
};
const sBoard BOARDS[] = {{"ZEV", 1, "ZEV 35V"}, {"ZEV", 2, "ZEV 100V"}, {"KOL", 3, "KOL 35V"}};

void deliver(const std::string& family) {
    const auto options = fs::copy_options::recursive | fs::copy_options::overwrite_existing;
    fs::copy(TEST_DEPLOY_DIR "/etc/quenvel/config/system", configPath(""), options);
    const fs::path own = TEST_DEPLOY_DIR "/families/" + family;
    if (fs::exists(own)) fs::copy(own, configPath(""), options);
}

TEST(ShippedFiles, LoadWithoutAFailureLineAndHoldTheDefaults) {
    for (const sBoard& board : BOARDS) {
        SCOPED_TRACE(board.model);
        deliver(board.family);
        CProcessorOn<CConfigAutoSaveProcessor> autoSave(board.devType);
        EXPECT_EQ("parse defult val \nrunning " + board.model + " parse \n1", load(autoSave));
        CProcessorOn<CConfigSystemProcessor> system(board.devType);
        EXPECT_EQ("1", load(system));

        CProcessorOn<CConfigPresetProcessor> preset(board.devType);
        EXPECT_EQ("1", load(preset));
        std::vector<std::string> loaded, defaults;
        for (int id = 32; id <= 40; id += 2)
            loaded.push_back(numbersIn(id) + ' ' + bytesIn(id + 1));
        preset.LoadDefaults();
        for (int id = 32; id <= 40; id += 2)
            defaults.push_back(numbersIn(id) + ' ' + bytesIn(id + 1));
        EXPECT_EQ(defaults, loaded);
    }
}

// Sections with nothing but a key that nobody reads take the defaults of the code.
TEST(ShippedFiles, VariantDataAreThoseOfTheCodeAlsoForAnUnknownType) {
    const std::string path = configPath("dev_var_system_config.cfg");
    for (int devType = 0; devType <= 3; ++devType) {
        SCOPED_TRACE(devType);
        CProcessorOn<CConfigDevVarSystemProcessor> processor(devType);
        CProcessorOn<CConfigDevVarSystemProcessor> without(devType);
        deliver("ZEV");
        EXPECT_EQ("CConfigDevVarSystemProcessor dev type : " + std::to_string(devType) +
                      " chn cnt : 2 \n1",
                  load(processor));
        EXPECT_EQ(0U, numbersIn(27).find("85.000000,"));
        const Doubles shipped = shared().getDoubleVector(28);
        writeFile(path, "");
        load(without);
        EXPECT_EQ(shared().getDoubleVector(28), shipped);
    }
}

}  // namespace
