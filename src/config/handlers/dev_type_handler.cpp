#include "config/handlers/dev_type_handler.h"

#include <cstdio>
#include <tuple>

#include "config/handlers/poll_interval.h"
#include "config/manager/hxl_config_handler.h"

using hxl_config_handler::CSingletonHxlConfigHandler;

CConfigDevTypeHandler::CConfigDevTypeHandler() {
    mstrName = "CConfigDevTypeHandler";
}

bool CConfigDevTypeHandler::start() {
    auto& facade = *CSingletonHxlConfigHandler::getInstance();
    facade.loadDevTypeConfig();
    auto [devType, chnCount] = facade.getDevTypeInfo();
    bool waited = false;
    while (chnCount == 0 || devType == 0) {
        std::tie(devType, chnCount) = facade.getDevTypeInfo();
        sleepPollInterval();
        waited = true;
    }
    if (waited || facade.isSettledIdentityUnrecorded()) {
        facade.setDevTypeInfo(devType, chnCount, true);
    }
    printDevInfo();
    return true;
}

void CConfigDevTypeHandler::printDevInfo() {
    const auto [devType, chnCount] = CSingletonHxlConfigHandler::getInstance()->getDevTypeInfo();
    std::printf("Dev Type %d Chn Count : %d \n", devType, chnCount);
}
