// Makes every kind of change that the product makes to its files, for tests/board/cuts.py.
// usage: board_changes DISK VERSIONS ROUNDS
// After change N it copies the files to the folder VERSIONS/N, and writes N to the last sector of
// DISK, without a flush of its own: where the disk has N, the change was reported as done.
#include <fcntl.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <utility>

#include "config/manager/hxl_config_handler.h"
#include "config/processors/config_processor.h"
#include "ini_file/file_config.h"

namespace {

class CChanges {
  public:
    CChanges(const char* disk, std::string versions)
        : mDisk(open(disk, O_WRONLY | O_DIRECT)), mVersions(std::move(versions)) {}

    void note(bool done) {
        if (!done) std::printf("WRONG: change %d failed\n", mNumber);
        std::filesystem::copy(hxl_config_handler::configFilePath(""),
                              mVersions + '/' + std::to_string(mNumber));
        alignas(512) int sector[128] = {mNumber};
        const off_t last = lseek(mDisk, -512, SEEK_END);
        if (pwrite(mDisk, sector, sizeof sector, last) != sizeof sector) std::abort();
        ++mNumber;
    }

  private:
    const int mDisk;
    const std::string mVersions;
    int mNumber = 0;
};

bool edit(const char* name, bool (*change)(core_utils::CFileConfig&)) {
    core_utils::CFileConfig file;
    return file.open(hxl_config_handler::configFilePath(name), "r+b") && change(file) &&
           file.close();
}

}  // namespace

int main(int argc, char** argv) {
    if (argc < 4) return 2;
    auto& facade = *hxl_config_handler::CSingletonHxlConfigHandler::getInstance();
    CChanges changes(argv[1], argv[2]);
    facade.setDevTypeInfo(2, 2, false);
    changes.note(facade.loadPresetConfig());
    for (int round = 0; round < std::atoi(argv[3]); ++round) {
        const double value = round % 2 == 0 ? 1.25 : 123.5;
        changes.note(facade.writeDevTypeString(
            round % 2 == 0 ? "KOL_35_VOLTS_DEV_2CH" : "35_VOLTS_DEV_2CH", true));
        const double correction[4] = {value, value, value, value};
        changes.note(facade.writeCurrentCorrection(correction));
        changes.note(edit("system_config.cfg",
                          [](auto& file) { return file.removeKey("SETTING_SYNC", "SYNC"); }));
        changes.note(facade.writeSettingSync(round % 2 == 0 ? 7 : 1234));
        changes.note(facade.loadAutoSaveConfig());
        // Also the text between the two changes of the next round's first seeding.
        changes.note(edit("conf_auto_save.cfg",
                          [](auto& file) { return file.write("CONF_STATUS", "STATE", 0); }));
        changes.note(facade.saveDblValues(0, {value, value}));
        changes.note(facade.saveDblValues(0, {value + 1, value + 1}));
        changes.note(facade.saveStrValues(24, {round % 2 == 0 ? "net" : "another-network"}));
        hxl_config_handler::sPresetBlock block{};
        block.fVoltageSet[0] = static_cast<float>(value);
        changes.note(facade.savePresetBlock(1 + round % 5, block, true));
        // Of the same length: where its lines lie, within a block or across the border of two.
        block.fChFusionCurrentSet[1] = 1;
        block.ucChnConnMode[0] = 1;
        changes.note(facade.savePresetBlock(1 + round % 5, block, true));
    }
}
