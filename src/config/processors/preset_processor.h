// conf_preset.cfg: the five preset memories.
#ifndef CONFIG_PROCESSORS_PRESET_PROCESSOR_H
#define CONFIG_PROCESSORS_PRESET_PROCESSOR_H

#include "config/processors/config_processor.h"
#include "config/records/preset_data.h"

namespace hxl_config_handler {

// Keeps each preset memory in three places: a section of the file, two shared objects and a
// record. The file stays open after the load; each save closes it, so that the preset reaches
// storage, and opens it again.
class CConfigPresetProcessor : public CAbsConfigProcesor {
  public:
    CConfigPresetProcessor();

    // A setting whose key is missing is 0 on both channels.
    int LoadConfigFile() override;

    // Fills records and shared memory, not the file. On an unknown device type each record keeps
    // its block, which is published as it is.
    int LoadDefaults() override;
    int Initialise() override;
    CConfData* GetConfData(int id) override { return getRecord(id); }

    // Null if one of the two objects cannot be read or is empty: otherwise zeros would be saved
    // over a stored preset.
    CConfData* GetSharedMemData(int id) override;

    // Writes all settings of the preset. If one cannot be written, the stored record stays as it
    // was, so that the next comparison finds the difference again.
    int SaveConfData(int id, CConfData* record) override;
    int SetSharedMemData(int id, CConfData* record) override;

    // The record identifier of preset memory 1 to 5; 0, which no record has, for other numbers.
    static int recordIdOf(int presetNo);

    // The block as the two shared objects of `id` hold it, read in place; it is for a poll. False,
    // and `block` unchanged, where GetSharedMemData() gives null.
    static bool readSharedBlock(int id, sPresetBlock& block);

  private:
    sPresetBlock readSection(const std::string& section);
    bool writeSection(const std::string& section, const sPresetBlock& block);
    void publishPreset(int id, const CConfPresetData& preset);
};

}  // namespace hxl_config_handler

#endif
