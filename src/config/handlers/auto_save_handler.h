// Keeps the auto-save file in step with the live settings in shared memory.
#ifndef CONFIG_HANDLERS_AUTO_SAVE_HANDLER_H
#define CONFIG_HANDLERS_AUTO_SAVE_HANDLER_H

#include <string>
#include <vector>

#include "config/handlers/config_handler.h"
#include "shared_memory/settling.h"

// Its thread loads the file once, which publishes the saved values over those that shared memory
// holds. Then it polls all items about once a millisecond, and has an item saved, with all its
// shared values, if they differ from the stored ones. An empty or absent shared vector is no
// change.
//
// The length of the stored vector drives the comparison. It is empty for an item that was neither
// seeded nor saved since the start: such an item is not compared. Of an item with one stored value
// only the first shared value is. A save that fails is tried again, and prints again, in every
// cycle; a NaN never compares equal, so its item is saved in every cycle.
//
// A cycle without a change allocates no memory.
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

  private:
    core_utils::CSettling<std::vector<double>> mDblSettling;
    core_utils::CSettling<std::vector<unsigned char>> mSelSettling;
    core_utils::CSettling<std::vector<std::string>> mStrSettling;
};

#endif
