// conf_auto_save.cfg: the live settings that the instrument comes back with after a power cycle.
#ifndef CONFIG_PROCESSORS_AUTO_SAVE_PROCESSOR_H
#define CONFIG_PROCESSORS_AUTO_SAVE_PROCESSOR_H

#include <vector>

#include "config/processors/config_processor.h"
#include "config/records/auto_save_data.h"

namespace hxl_config_handler {

// Publishes the saved values at start, or seeds file and shared memory with the factory defaults
// of the device type when the file is marked as fresh, and writes single items back.
class CConfigAutoSaveProcessor : public CAbsConfigProcesor {
  public:
    CConfigAutoSaveProcessor();

    // Publishes saved values over whatever shared memory holds, and not into the records: these
    // stay empty until an item is seeded or saved. Non-numeric text in a level item aborts the load
    // with std::invalid_argument or std::out_of_range, and no later item is loaded; in a list of
    // bytes only that piece is dropped. A load that was aborted, or could not read STATE, leaves
    // the file open, so that the next load fails.
    int LoadConfigFile() override { return parseConfigAutoSaveFile(); }

    // To file, records and shared memory. All items reach the file and the records, or none do and
    // the result is 0.
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
    // Non-zero on success, as the operations of the contract that they are for.
    template <typename T>
    int publishItem(int id, const std::vector<T>& values);
    template <typename T>
    int saveItem(int id, const std::vector<T>& values);
    // Gives the processor's own record of the item, or null if nothing was written.
    template <typename T>
    CConfAutoSaveData<T>* writeItem(int id, const std::vector<T>& values);

    bool openForWriting();
};

}  // namespace hxl_config_handler

#endif
