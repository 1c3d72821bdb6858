// Makes every kind of change that the product makes to its files, for tests/board/cuts.py. After
// change N it copies the files to the folder N, and writes N to the last sector of the disk,
// without a flush of its own: where the disk has N, the change was reported as done.
#include <fcntl.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>

#include "config/manager/hxl_config_handler.h"
#include "config/schema/config_paths.h"
#include "ini_file/file_config.h"

namespace {

constexpr int ROUNDS = 10;

// Ends the program if the change was not done.
void note(bool done) {
    static const int DISK = open("/dev/vda", O_WRONLY | O_DIRECT);
    static int number = 0;
    std::filesystem::copy(hxl_config_handler::configFilePath(""), std::to_string(number));
    alignas(512) const int sector[128] = {number};
    const off_t last = lseek(DISK, -512, SEEK_END);
    if (!done || pwrite(DISK, sector, sizeof sector, last) != sizeof sector) {
        std::fprintf(stderr, "change %d failed\n", number);
        std::exit(1);
    }
    ++number;
}

bool edit(const char* name, bool (*change)(core_utils::CFileConfig&)) {
    core_utils::CFileConfig file;
    return file.open(hxl_config_handler::configFilePath(name), "r+b") && change(file) &&
           file.close();
}

}  // namespace

int main() {
    auto& facade = *hxl_config_handler::CSingletonHxlConfigHandler::getInstance();
    facade.setDevTypeInfo(2, 2, false);
    note(facade.loadPresetConfig());
    for (int round = 0; round < ROUNDS; ++round) {
        const double value = round % 2 == 0 ? 1.25 : 123.5;
        note(facade.writeDevTypeString(round % 2 == 0 ? "KOL_35_VOLTS_DEV_2CH" : "35_VOLTS_DEV_2CH",
                                       true));
        const double correction[4] = {value, value, value, value};
        note(facade.writeCurrentCorrection(correction));
        note(edit("system_config.cfg",
                  [](auto& file) { return file.removeKey("SETTING_SYNC", "SYNC"); }));
        note(facade.writeSettingSync(round % 2 == 0 ? 7 : 1234));
        note(facade.loadAutoSaveConfig());
        // Also the text between the two changes of the next round's first seeding.
        note(edit("conf_auto_save.cfg",
                  [](auto& file) { return file.write("CONF_STATUS", "STATE", 0); }));
        note(facade.saveDblValues(0, {value, value}));
        note(facade.saveDblValues(0, {value + 1, value + 1}));
        note(facade.saveStrValues(24, {round % 2 == 0 ? "net" : "another-network"}));
        hxl_config_handler::sPresetBlock block{};
        block.fVoltageSet[0] = static_cast<float>(value);
        note(facade.savePresetBlock(1 + round % 5, block, true));
        // Of the same length: where its lines lie, within a block or across the border of two.
        block.fChFusionCurrentSet[1] = 1;
        block.ucChnConnMode[0] = 1;
        note(facade.savePresetBlock(1 + round % 5, block, true));
    }
}
