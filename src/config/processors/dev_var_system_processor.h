// dev_var_system_config.cfg: the factory's fan-control service settings and drift correction,
// which differ between the 35 V and the 100 V variant.
#ifndef CONFIG_PROCESSORS_DEV_VAR_SYSTEM_PROCESSOR_H
#define CONFIG_PROCESSORS_DEV_VAR_SYSTEM_PROCESSOR_H

#include <cstddef>
#include <string>

#include "config/processors/config_processor.h"
#include "config/schema/dev_var_schema.h"

namespace hxl_config_handler {

// Reads the sections of the unit's own variant and publishes them; never writes the file.
class CConfigDevVarSystemProcessor : public CAbsConfigProcesor {
  public:
    CConfigDevVarSystemProcessor();

    // A key that cannot be read is published as its row's fallback.
    int LoadConfigFile() override;
    int LoadDefaults() override { return 0; }
    int Initialise() override;
    CConfData* GetConfData(int id) override { return getRecord(id); }
    CConfData* GetSharedMemData(int id) override;
    int SaveConfData(int, CConfData*) override { return 0; }
    int SetSharedMemData(int, CConfData*) override { return 0; }

  private:
    template <typename Record, std::size_t COUNT>
    void loadItem(int id, const std::string& section, const sNumberRow (&rows)[COUNT]);
};

}  // namespace hxl_config_handler

#endif
