// One preset memory: all output settings of both channels.
#ifndef CONFIG_RECORDS_PRESET_DATA_H
#define CONFIG_RECORDS_PRESET_DATA_H

#include <string>

#include "config/records/auto_save_data.h"
#include "config/schema/preset_schema.h"

namespace hxl_config_handler {

// True if no setting differs: -0.0 equals 0.0, and a NaN never compares equal.
bool operator==(const sPresetBlock& a, const sPresetBlock& b);

// Owns the preset's block, and its numbers and states as they go to shared memory. Whichever it is
// made from, the other is converted once; values that the numbers and states lack are zero in the
// block.
class CConfPresetData : public CConfData {
  public:
    // An empty preset under a name of its own as key; the other two have the class name as key.
    CConfPresetData(int id, const std::string& name);
    CConfPresetData(int id, const sPresetBlock& block);
    CConfPresetData(int id, const CConfAutoSaveDataDbl& dblData,
                    const CConfAutoSaveDataSel& selData);

    const sPresetBlock& GetPresetBlock() const { return mBlock; }
    void SetPresetBlock(const sPresetBlock& block);

    const CConfAutoSaveDataDbl& GetDblData() const { return mDblData; }
    const CConfAutoSaveDataSel& GetSelData() const { return mSelData; }

  private:
    sPresetBlock mBlock{};
    CConfAutoSaveDataDbl mDblData;
    CConfAutoSaveDataSel mSelData;
};

}  // namespace hxl_config_handler

#endif
