// conf_auto_save.cfg: the live settings that the instrument comes back with after a power cycle.
#ifndef CONFIG_PROCESSORS_AUTO_SAVE_PROCESSOR_H
#define CONFIG_PROCESSORS_AUTO_SAVE_PROCESSOR_H

#include "config/processors/config_processor.h"
#include "config/records/auto_save_data.h"

namespace hxl_config_handler {

// Publishes the saved values at start, or seeds file and shared memory with the factory defaults
// of the device type when the file is marked as fresh, and writes single items back.
class CConfigAutoSaveProcessor : public CAbsConfigProcesor {
  public:
    CConfigAutoSaveProcessor();

    // Publishes saved values over whatever shared memory holds, and not into the records: these
    // stay empty until an item is seeded or saved. A bad number among the level items ends the load
    // with std::invalid_argument or std::out_of_range, and all later items stay unloaded; a bad
    // byte is dropped alone.
    int LoadConfigFile() override { return parseConfigAutoSaveFile(); }

    // To file, records and shared memory. All items reach the file and the
    // records or none: then 0.
    int LoadDefaults() override;
    int Initialise() override;
    CConfData* GetConfData(int id) override;
    CConfData* GetSharedMemData(int id) override;
    int SaveConfData(int id, CConfData* record) override;
    int SetSharedMemData(int id, CConfData* record) override;

  private:
    int parseConfigAutoSaveFile();
    int parseConfigAutoSaveFileNewVal();
    int parseDefaults();
    void markInitialised();

    template <typename T>
    void loadGroup();
    template <typename T>
    bool writeDefaults(int devType);
    template <typename T>
    void recordDefaults(int devType);
    template <typename T>
    void addRecords();
    template <typename T>
    int save(int id, CConfData* record);
    // Gives the processor's own record of the item, or null if it was not written.
    template <typename T>
    CConfAutoSaveData<T>* write(int id, CConfData* record);

    bool openForWriting();
};

}  // namespace hxl_config_handler

#endif
