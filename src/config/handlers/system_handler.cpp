#include "config/handlers/system_handler.h"

#include <cstdio>
#include <string>

#include "config/manager/hxl_config_handler.h"

using hxl_config_handler::CConfCurrentSharingData;
using hxl_config_handler::CSingletonHxlConfigHandler;

CConfigSystemHandler::CConfigSystemHandler() {
    mstrName = "ConfigSystemHandler";
}

void CConfigSystemHandler::run() {
    CSingletonHxlConfigHandler::getInstance()->loadSystemConfig();
}

void CConfigSystemHandler::printSystemConfig() {
    auto& facade = *CSingletonHxlConfigHandler::getInstance();
    CConfCurrentSharingData record(hxl_config_handler::CURRENT_SHARING_ID);
    facade.getCurrentSharing(record);
    const auto sharing = record.GetCurrentSharing();
    std::string version;
    facade.getChnFwVersion(version);

    std::printf("sCurrentSharing Setting dDominantPart :%f \n", sharing.dDominantPart);
    std::printf("sCurrentSharing Setting dSupportingPart :%f \n", sharing.dSupportingPart);
    std::printf("sCurrentSharing Setting dMidPoint :%f \n", sharing.dMidPoint);
    std::printf("sCurrentSharing Setting dConvergePoint :%f \n", sharing.dConvergePoint);
    // The last two labels stand before each other's number: these lines are an interface.
    std::printf("sCurrentSharing Setting dUpwardGrad_Ch1 :%f \n", sharing.dDownwardGrad_Ch2);
    std::printf("sCurrentSharing Setting dDownwardGrad_Ch2 :%f \n", sharing.dUpwardGrad_Ch1);
    std::printf("CHN FW Version :%s \n", version.c_str());
}
