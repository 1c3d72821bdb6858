// Runs the auto-save and the preset handler until it is killed. With an argument it also keeps
// changing, in the files that no handler writes, what other programs change through the library.
#include <unistd.h>

#include "config/handlers/auto_save_handler.h"
#include "config/handlers/preset_handler.h"
#include "config/manager/hxl_config_handler.h"

int main(int argc, char**) {
    auto& facade = *hxl_config_handler::CSingletonHxlConfigHandler::getInstance();
    facade.loadDevTypeConfig();
    facade.getDevTypeInfo();
    CConfigAutoSaveHandler autoSave;
    CConfigPresetHandler presets;
    if (!autoSave.init() || !autoSave.start() || !presets.init() || !presets.start()) return 1;
    constexpr const char* IDENTITIES[] = {"KOL_35_VOLTS_DEV_2CH", "35_VOLTS_DEV_2CH"};
    constexpr double CORRECTIONS[][4] = {{1.25, 1.25, 1.25, 1.25}, {123.5, 123.5, 123.5, 123.5}};
    constexpr int SYNC_MARKS[] = {7, 1234};
    for (bool other = false; argc > 1; other = !other) {
        facade.writeDevTypeString(IDENTITIES[other], true);
        facade.writeCurrentCorrection(CORRECTIONS[other]);
        facade.writeSettingSync(SYNC_MARKS[other]);
    }
    while (true)
        pause();
}
