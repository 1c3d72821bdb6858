// The configuration daemon: prints its banner, starts the handlers and stays.
#include <time.h>

#include <cstdio>
#include <iostream>

#include "host/app_config_manager.h"
#include "host/process_setup.h"

// The build's choice of handlers; without one the daemon keeps the identity alone.
#ifndef APP_CONFIG_HANDLERS
#define APP_CONFIG_HANDLERS eHandler::DEV_TYPE
#endif

int main() {
    setUpProcess();
    std::cout << "App Config Manager" << std::endl;
    // Never freed: its handlers run to the end.
    auto* registry = new CAppConfigManager({APP_CONFIG_HANDLERS});
    if (!registry->init()) {
        std::puts("FAILED TO INITIALISE APP CONFIG MNGR");
    } else if (!registry->start()) {
        std::puts("FAILED TO START APP CONFIG MNGR");
    }

    // Resident whatever happened: whoever supervises the board must not see a restart loop.
    while (true) {
        constexpr timespec ONE_SECOND{1, 0};
        nanosleep(&ONE_SECOND, nullptr);
    }
}
