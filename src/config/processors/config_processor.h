// What every configuration file's processor is to the manager and the handlers.
#ifndef CONFIG_PROCESSORS_CONFIG_PROCESSOR_H
#define CONFIG_PROCESSORS_CONFIG_PROCESSOR_H

#include <cstddef>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "config/processors/dev_type_info.h"
#include "config/records/conf_data.h"
#include "config/schema/number_row.h"
#include "ini_file/file_config.h"

namespace core_utils {
class CSharedMemory;
}

// One configuration file: it walks the rows of the file's schema, keeps one record for each item,
// and moves values between file, records and shared memory.
//
// A processor owns its file object and its records. It takes no locks: one thread at a time.
// Operations that return int give non-zero for success, but for Initialise, which cannot fail:
// some processors' return 0, some 1. Non-numeric text in the file can make LoadConfigFile throw
// std::invalid_argument or std::out_of_range.
class CAbsConfigProcesor {
  public:
    // Each processor makes one more shared-memory manager; all use the last one made, and the
    // earlier ones are never freed.
    explicit CAbsConfigProcesor(const std::string& name, const std::string& fileName = {});
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
    // without a shared-memory manager. For an identifier that names no item, processors of several
    // types of items give null; the others make their one type of record.
    virtual hxl_config_handler::CConfData* GetSharedMemData(int id) = 0;

    // Writes the values of `record`, which stays the caller's, to the file and into the stored
    // record of `id`.
    virtual int SaveConfData(int id, hxl_config_handler::CConfData* record) = 0;

    // Writes the values of `record`, which stays the caller's, to the shared object of `id`.
    virtual int SetSharedMemData(int id, hxl_config_handler::CConfData* record) = 0;

    // Says what loads and saves take for the identity. Must not block. Not owned; must outlive the
    // processor.
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
    // be opened or is open already: a load that leaves its file open cannot be repeated.
    bool openFile(const char* mode);

    // The values of `rows` from the open file, each in its place; a key that cannot be read counts
    // as its fallback.
    template <std::size_t COUNT>
    std::vector<double> readNumbers(const std::string& section,
                                    const hxl_config_handler::sNumberRow (&rows)[COUNT]) {
        std::vector<double> values(COUNT);
        for (const hxl_config_handler::sNumberRow& row : rows)
            values[row.index] = readNumber(section, row);
        return values;
    }

    // (device type, channel count); zeros without a provider.
    std::pair<int, int> getDevTypeInfo();

    // The stored record of `id`. A look-up of an unknown one leaves a null entry behind.
    hxl_config_handler::CConfData* getRecord(int id) { return mMapConfData[id].get(); }

    // The same as a `Record`; null if it is of another class.
    template <typename Record>
    Record* getRecordAs(int id) {
        return dynamic_cast<Record*>(getRecord(id));
    }

    // True if `id` has a record; leaves no entry behind.
    bool hasRecord(int id) const;

    // Enters `record` under its identifier; a record that is there stays.
    void addRecord(std::unique_ptr<hxl_config_handler::CConfData> record);

    const std::string mstrName;
    const std::string mstrFileName;
    std::unique_ptr<core_utils::CFileConfig> mpFileConfig;
    std::map<int, std::unique_ptr<hxl_config_handler::CConfData>> mMapConfData;

  private:
    double readNumber(const std::string& section, const hxl_config_handler::sNumberRow& row);

    IDevTypeInfo* mpDevTypeInfo = nullptr;
};

#endif
