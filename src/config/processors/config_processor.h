// What every configuration file's processor is to the manager and the handlers.
#ifndef CONFIG_PROCESSORS_CONFIG_PROCESSOR_H
#define CONFIG_PROCESSORS_CONFIG_PROCESSOR_H

#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "config/processors/dev_type_info.h"
#include "config/records/conf_data.h"
#include "ini_file/file_config.h"

namespace core_utils {
class CSharedMemory;
}

namespace hxl_config_handler {

// The path of a configuration file, from its name.
std::string configFilePath(const std::string& fileName);

}  // namespace hxl_config_handler

// One configuration file: it knows the file's sections and keys, keeps one record for each item,
// and moves values between file, records and shared memory.
//
// A processor owns its file object and its records. It takes no locks: one thread at a time.
// Operations that return int give non-zero for success, but for Initialise, which cannot fail:
// some processors' return 0, some 1. Text of the file that is no number can make LoadConfigFile
// throw std::invalid_argument or std::out_of_range.
class CAbsConfigProcesor {
  public:
    // Each processor makes one more shared-memory manager; all use the last one made, and the
    // earlier ones are never freed.
    explicit CAbsConfigProcesor(const std::string& name);
    CAbsConfigProcesor(const CAbsConfigProcesor&) = delete;
    CAbsConfigProcesor& operator=(const CAbsConfigProcesor&) = delete;

    // Opens the file and publishes its values into shared memory.
    virtual int LoadConfigFile() = 0;

    // Puts the factory defaults of this device type into shared memory; 0 if there are none.
    virtual int LoadDefaults() = 0;

    // Builds the record table.
    virtual int Initialise() = 0;

    // The record of `id`, which stays the processor's; null if there is none.
    virtual hxl_config_handler::CConfData* GetConfData(int id) = 0;

    // A new record with the values of the shared object of `id`, which the caller deletes; null
    // without a shared-memory manager. An `id` that is no item is null to the processors that
    // hold items of several types; the others make their one type of record for it.
    virtual hxl_config_handler::CConfData* GetSharedMemData(int id) = 0;

    // Writes the values of `record`, which stays the caller's, to the file and into the stored
    // record of `id`.
    virtual int SaveConfData(int id, hxl_config_handler::CConfData* record) = 0;

    // Writes the values of `record`, which stays the caller's, to the shared object of `id`.
    virtual int SetSharedMemData(int id, hxl_config_handler::CConfData* record) = 0;

    // Not owned; must outlive the processor.
    void setDevTypeInfo(IDevTypeInfo* provider) { mpDevTypeInfo = provider; }

    // The one shared-memory manager of the process; null before the first processor.
    static core_utils::CSharedMemory* mpSharedMemoryMngr;

  protected:
    ~CAbsConfigProcesor() = default;

    // The manager for a write; prints when there is none.
    static core_utils::CSharedMemory* sharedMemoryForWrite();

    // Writes into the shared object of `id`; does nothing without a manager.
    static void publish(int id, const std::vector<double>& values);
    static void publish(int id, const std::string& text);

    // The first text of the shared object of `id`, or empty.
    static std::string getSharedText(int id);

    // Opens this processor's file, making its file object at the first call. False if it cannot
    // be opened or is open already.
    bool openFile(const std::string& fileName, const char* mode);

    // (device type, channel count); zeros without a provider.
    std::pair<int, int> getDevTypeInfo();

    // The stored record of `id`. Looking up an unknown one leaves a null entry behind.
    hxl_config_handler::CConfData* getRecord(int id) { return mMapConfData[id].get(); }

    // The same as a `Record`; null if it is none.
    template <typename Record>
    Record* getRecordAs(int id) {
        return dynamic_cast<Record*>(getRecord(id));
    }

    // True if `id` has a record; leaves no entry behind.
    bool hasRecord(int id) const;

    // Enters `record` under its identifier; a record that is there stays.
    void addRecord(std::unique_ptr<hxl_config_handler::CConfData> record);

    const std::string mstrName;
    std::unique_ptr<core_utils::CFileConfig> mpFileConfig;
    std::map<int, std::unique_ptr<hxl_config_handler::CConfData>> mMapConfData;

  private:
    IDevTypeInfo* mpDevTypeInfo = nullptr;
};

#endif
