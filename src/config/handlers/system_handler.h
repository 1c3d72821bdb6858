// Has the factory's system data loaded.
#ifndef CONFIG_HANDLERS_SYSTEM_HANDLER_H
#define CONFIG_HANDLERS_SYSTEM_HANDLER_H

#include "config/handlers/config_handler.h"

// Its thread loads the file once and ends.
class CConfigSystemHandler : public CAbsConfigHandler {
  public:
    CConfigSystemHandler();

    void run() override;
    void requestStop() override { mbStop = true; }
    bool start() override { return startThread(); }

    // Prints the current-sharing settings and the firmware version as published.
    void printSystemConfig();
};

#endif
