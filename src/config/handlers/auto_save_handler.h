// Keeps the auto-save file in step with the live settings in shared memory.
#ifndef CONFIG_HANDLERS_AUTO_SAVE_HANDLER_H
#define CONFIG_HANDLERS_AUTO_SAVE_HANDLER_H

#include <vector>

#include "config/handlers/config_handler.h"

// Its thread loads the file once, which publishes the saved values over those that shared memory
// holds. Then it polls all items about once a millisecond and has each one saved, with all its
// shared values, where these differ from the stored ones; an empty or absent vector does not.
//
// The stored values drive the comparison. An item that was neither seeded nor saved since the
// start has none and is not followed; of an item with one stored value only the first shared one
// is. A save that fails is tried again, and prints again, in every cycle.
class CConfigAutoSaveHandler : public CAbsConfigHandler {
  public:
    CConfigAutoSaveHandler();

    void run() override;
    void requestStop() override { mbStop = true; }
    bool start() override { return startThread(); }

    // Prints the stored and the shared values of every item.
    void printConfData();

  protected:
    // One cycle: compares every item and has the changed ones saved.
    void saveChanges();

    std::vector<unsigned int> mvecDblIndex;
    std::vector<unsigned int> mvecSelIndex;
    std::vector<unsigned int> mvecStrIndex;
};

#endif
