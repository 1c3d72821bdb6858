// The registry that creates the configuration handlers and starts them.
#ifndef HOST_APP_CONFIG_MANAGER_H
#define HOST_APP_CONFIG_MANAGER_H

#include <map>
#include <string>

#include "config/handlers/config_handler.h"

// Made once by main() and never freed, like the handlers, which it does not own. Main thread
// only, and no lock: init() once, then start() at most once.
class CAppConfigManager {
  public:
    // Creates the five handlers, registers the device-type handler alone and initialises what is
    // registered. False, and printed, at the first handler that fails, or with none registered.
    bool init();

    // Starts what is registered, in the order of names, except the system handler. False, and
    // printed, at the first handler that fails, or when none was started.
    bool start();

  protected:
    std::map<std::string, CAbsConfigHandler*> mMapHandlers;

    // init()'s second half: the handlers that are registered.
    bool initHandlers();
};

#endif
