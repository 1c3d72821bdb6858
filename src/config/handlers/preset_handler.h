// Keeps the preset file in step with the preset memories in shared memory.
#ifndef CONFIG_HANDLERS_PRESET_HANDLER_H
#define CONFIG_HANDLERS_PRESET_HANDLER_H

#include <vector>

#include "config/handlers/config_handler.h"
#include "config/records/preset_data.h"
#include "shared_memory/settling.h"

// Its thread loads the file once, which publishes the saved presets over those that shared memory
// holds. Then it compares one preset memory a millisecond and has the whole block saved when any
// setting differs. A save that fails is tried again, and prints again, in every pass. A NaN never
// compares equal, so its preset is written in every pass.
//
// A pass without a change allocates no memory.
class CConfigPresetHandler : public CAbsConfigHandler {
  public:
    CConfigPresetHandler();

    // Without an earlier init() this polls nothing, without pause and without end.
    void run() override;
    void requestStop() override { mbStop = true; }
    bool start() override { return startThread(); }

    // Adds the five preset memories to those polled, at every call.
    bool init() override;

    // True if no setting differs.
    bool isPresetEqual(hxl_config_handler::sPresetBlock shmBlock,
                       hxl_config_handler::sPresetBlock storedBlock);

  protected:
    // Compares one preset memory and has it saved if any setting differs.
    void saveIfChanged(int presetNo);

    std::vector<unsigned int> mvecPresetIndex;

  private:
    core_utils::CSettling<hxl_config_handler::sPresetBlock> mSettling;
};

#endif
