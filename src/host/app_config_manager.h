// The registry that creates the configuration handlers and starts them.
#ifndef HOST_APP_CONFIG_MANAGER_H
#define HOST_APP_CONFIG_MANAGER_H

#include <map>
#include <set>
#include <string>
#include <utility>

#include "config/handlers/config_handler.h"

// The handlers in the order of their creation. The build's APP_CONFIG_HANDLERS takes these names in
// small letters.
enum class eHandler { AUTO_SAVE, PRESET, SYSTEM, DEV_TYPE, DEV_VAR_SYSTEM };

// Made once by main() and never freed, like the handlers, which it does not own. Main thread
// only, and no lock: init() once, then start() at most once.
class CAppConfigManager {
  public:
    // Which handlers are to be registered decides which files this process owns.
    explicit CAppConfigManager(std::set<eHandler> registered = {eHandler::DEV_TYPE})
        : mRegistered(std::move(registered)) {}

    // Creates the five handlers, registers those that were asked for and initialises these.
    // False, and printed, at the first handler that fails, or with none registered.
    bool init();

    // Starts what is registered, in the order of names, except the system handler. False, and
    // printed, at the first handler that fails, or when none was started.
    bool start();

  protected:
    std::map<std::string, CAbsConfigHandler*> mMapHandlers;

    // init()'s second half: the handlers that are registered.
    bool initHandlers();

  private:
    std::set<eHandler> mRegistered;
};

#endif
