#include "host/app_config_manager.h"

#include <cstdio>

#include "config/handlers/auto_save_handler.h"
#include "config/handlers/dev_type_handler.h"
#include "config/handlers/dev_var_system_handler.h"
#include "config/handlers/preset_handler.h"
#include "config/handlers/system_handler.h"

namespace {

// Never started, even when it is registered: an interface, like the printed lines.
constexpr char NOT_STARTED[] = "ConfigSystemHandler";

}  // namespace

bool CAppConfigManager::init() {
    mMapHandlers.clear();
    // Never freed: handlers live until the process ends.
    const struct {
        eHandler which;
        CAbsConfigHandler* handler;
    } HANDLERS[] = {
        {eHandler::AUTO_SAVE, new CConfigAutoSaveHandler},
        {eHandler::PRESET, new CConfigPresetHandler},
        {eHandler::SYSTEM, new CConfigSystemHandler},
        {eHandler::DEV_TYPE, new CConfigDevTypeHandler},
        {eHandler::DEV_VAR_SYSTEM, new CConfigDevVarSystemHandler},
    };
    for (const auto& [which, handler] : HANDLERS)
        if (mRegistered.count(which) != 0) mMapHandlers.emplace(handler->mstrName, handler);
    return initHandlers();
}

bool CAppConfigManager::initHandlers() {
    bool result = false;
    for (const auto& [name, handler] : mMapHandlers) {
        if (handler == nullptr) continue;
        result = handler->init();
        if (!result) {
            std::printf("FAILED to START :%s\n", name.c_str());
            return false;
        }
    }
    return result;
}

bool CAppConfigManager::start() {
    bool result = false;
    for (const auto& [name, handler] : mMapHandlers) {
        if (handler == nullptr) continue;
        if (name == NOT_STARTED) {
            std::printf("ProcessEx COnfigHandler : %s \n", name.c_str());
            continue;
        }
        std::printf("Process COnfigHandler : %s \n", name.c_str());
        result = handler->start();
        if (!result) {
            std::printf("FAILED to START :%s\n", name.c_str());
            return false;
        }
    }
    return result;
}
