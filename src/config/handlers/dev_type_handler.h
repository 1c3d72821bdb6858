// Holds the start of the daemon until the instrument knows what it is.
#ifndef CONFIG_HANDLERS_DEV_TYPE_HANDLER_H
#define CONFIG_HANDLERS_DEV_TYPE_HANDLER_H

#include "config/handlers/config_handler.h"

// Has no thread: start() works on the caller's.
class CConfigDevTypeHandler : public CAbsConfigHandler {
  public:
    CConfigDevTypeHandler();

    void run() override {}
    void requestStop() override { mbStop = true; }

    // Loads the stored identity and returns once shared memory holds one, however long that
    // takes; an identity that came while waiting is recorded in the file. Always true.
    bool start() override;

    void printDevInfo();
};

#endif
