#include "config/handlers/preset_handler.h"

#include <thread>

#include "config/handlers/poll_interval.h"
#include "config/manager/hxl_config_handler.h"

using hxl_config_handler::CSingletonHxlConfigHandler;
using hxl_config_handler::sPresetBlock;

CConfigPresetHandler::CConfigPresetHandler() {
    mstrName = "ConfigPresetSaveHandler";
}

bool CConfigPresetHandler::init() {
    mvecPresetIndex.insert(mvecPresetIndex.end(), {1, 2, 3, 4, 5});
    return true;
}

void CConfigPresetHandler::run() {
    CSingletonHxlConfigHandler::getInstance()->loadPresetConfig();
    while (!mbStop) {
        // Not even a stop ends this loop; yielding leaves the processor to other threads.
        while (mvecPresetIndex.empty())
            std::this_thread::yield();
        for (const unsigned int presetNo : mvecPresetIndex) {
            saveIfChanged(static_cast<int>(presetNo));
            sleepPollInterval();
        }
    }
}

bool CConfigPresetHandler::isPresetEqual(sPresetBlock shmBlock, sPresetBlock storedBlock) {
    return shmBlock == storedBlock;
}

void CConfigPresetHandler::saveIfChanged(int presetNo) {
    auto& facade = *CSingletonHxlConfigHandler::getInstance();
    sPresetBlock shm{};
    sPresetBlock stored{};
    // A preset that is not in shared memory keeps its stored settings.
    if (!facade.getPresetBlock(presetNo, shm, false)) return;
    facade.getPresetBlock(presetNo, stored, true);
    if (isPresetEqual(shm, stored) || !mSettling.hasSettled(presetNo, shm)) return;
    facade.savePresetBlock(presetNo, shm, true);
}
