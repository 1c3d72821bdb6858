// The files that a board is delivered with, loaded as that board does.
#include <filesystem>

#include "config/processors/auto_save_processor.h"
#include "config/processors/dev_var_system_processor.h"
#include "config/processors/preset_processor.h"
#include "config/processors/system_processor.h"
#include "support/processor_test.h"

namespace {

using namespace support;
namespace fs = std::filesystem;

TEST(ShippedFiles, LoadWithoutAFailureLineAndHoldTheDefaults) {
    const auto options = fs::copy_options::recursive | fs::copy_options::overwrite_existing;
    const std::string deploy = TEST_DEPLOY_DIR, zev = "/etc/quenvel/config/system";
    const struct {
        int devType;
        std::string family, seeding;
    } boards[] = {{0, zev, "0"},
                  {1, zev, "running ZEV 35V parse \n1"},
                  {2, zev, "running ZEV 100V parse \n1"},
                  {3, "/families/KOL", "running KOL 35V parse \n1"}};
    for (const auto& board : boards) {
        SCOPED_TRACE(board.devType);
        for (const std::string& folder : {zev, board.family})
            fs::copy(deploy + folder, configPath(""), options);
        CProcessorOn<CConfigAutoSaveProcessor> autoSave(board.devType);
        EXPECT_EQ("parse defult val \n" + board.seeding, load(autoSave));
        CProcessorOn<CConfigSystemProcessor> system(board.devType);
        EXPECT_EQ("1", load(system));

        CProcessorOn<CConfigPresetProcessor> preset(board.devType);
        EXPECT_EQ("1", load(preset));
        const auto presets = [] {
            return presetIn(1) + presetIn(2) + presetIn(3) + presetIn(4) + presetIn(5);
        };
        const std::string loaded = presets();
        preset.LoadDefaults();
        EXPECT_EQ(presets(), loaded);

        CProcessorOn<CConfigDevVarSystemProcessor> variant(board.devType), bare(board.devType);
        EXPECT_EQ("CConfigDevVarSystemProcessor dev type : " + std::to_string(board.devType) +
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
