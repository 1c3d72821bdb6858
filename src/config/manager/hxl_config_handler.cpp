#include "config/manager/hxl_config_handler.h"

#include <unistd.h>

#include <cstdio>

namespace hxl_config_handler {

std::atomic<CSingletonHxlConfigHandler*> CSingletonHxlConfigHandler::mpInstance{nullptr};
std::mutex CSingletonHxlConfigHandler::mInstanceMutex;

// Neither the facade nor its manager is ever freed: handler threads use them to the end.
CSingletonHxlConfigHandler::CSingletonHxlConfigHandler() : mpManager(new CConfigManager) {}

CSingletonHxlConfigHandler* CSingletonHxlConfigHandler::getInstance() {
    CSingletonHxlConfigHandler* instance = mpInstance;
    if (instance != nullptr) return instance;
    const std::lock_guard<std::mutex> lock(mInstanceMutex);
    if (mpInstance == nullptr) mpInstance = new CSingletonHxlConfigHandler;
    return mpInstance;
}

std::pair<int, int> CSingletonHxlConfigHandler::getDevTypeInfo() {
    std::pair<int, int> info;
    mpManager->getDevTypeInfo(info);
    return info;
}

bool CSingletonHxlConfigHandler::writeCurrentCorrection(const double values[4]) {
    std::printf("CSingletonHxlConfigHandler::writeCurrentCorrection check values: %f %f %f %f \n",
                values[0], values[1], values[2], values[3]);
    return mpManager->writeCurrentCorrection(values);
}

bool CSingletonHxlConfigHandler::isSdioCardPresent() {
    return access("/sys/class/mmc_host/mmc0/mmc0:0001", F_OK) == 0;
}

}  // namespace hxl_config_handler
