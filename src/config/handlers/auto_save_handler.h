// Keeps the auto-save file in step with the live settings in shared memory.
#ifndef CONFIG_HANDLERS_AUTO_SAVE_HANDLER_H
#define CONFIG_HANDLERS_AUTO_SAVE_HANDLER_H

#include <vector>

#include "config/handlers/config_handler.h"

// Its thread loads the file once, then polls all items about once a millisecond and has each one
// saved whose shared values differ from the stored ones. It never writes shared memory. A save
// that fails is tried again in the next cycle.
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
