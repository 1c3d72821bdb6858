#include "config/handlers/dev_var_system_handler.h"

#include "config/manager/hxl_config_handler.h"

using hxl_config_handler::CSingletonHxlConfigHandler;

CConfigDevVarSystemHandler::CConfigDevVarSystemHandler() {
    mstrName = "ConfigDevVarSystemHandler";
}

void CConfigDevVarSystemHandler::run() {
    CSingletonHxlConfigHandler::getInstance()->loadDevVarSystemConfig();
}
