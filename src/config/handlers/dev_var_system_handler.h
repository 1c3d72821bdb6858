// Has the factory data of the device variant loaded.
#ifndef CONFIG_HANDLERS_DEV_VAR_SYSTEM_HANDLER_H
#define CONFIG_HANDLERS_DEV_VAR_SYSTEM_HANDLER_H

#include "config/handlers/config_handler.h"

// Its thread loads the file once and ends.
class CConfigDevVarSystemHandler : public CAbsConfigHandler {
  public:
    CConfigDevVarSystemHandler();

    void run() override;
    void requestStop() override { mbStop = true; }
    bool start() override { return startThread(); }
};

#endif
