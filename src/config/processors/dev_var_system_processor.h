// dev_var_system_config.cfg: the factory's fan-control service settings and drift correction,
// which differ between the 35 V and the 100 V variant.
#ifndef CONFIG_PROCESSORS_DEV_VAR_SYSTEM_PROCESSOR_H
#define CONFIG_PROCESSORS_DEV_VAR_SYSTEM_PROCESSOR_H

#include "config/processors/config_processor.h"

namespace hxl_config_handler {

// Reads the sections of the unit's own variant and publishes them; never writes the file.
class CConfigDevVarSystemProcessor : public CAbsConfigProcesor {
  public:
    CConfigDevVarSystemProcessor();

    // A service key that cannot be read publishes 0.0, a drift key its default.
    int LoadConfigFile() override;
    int LoadDefaults() override { return 0; }
    int Initialise() override;
    CConfData* GetConfData(int id) override { return getRecord(id); }
    CConfData* GetSharedMemData(int id) override;
    int SaveConfData(int, CConfData*) override { return 0; }
    int SetSharedMemData(int, CConfData*) override { return 0; }

  private:
    std::string sectionOfVariant(const std::string& section);
    void loadServiceSettings();
    void loadDriftCorrection();
};

}  // namespace hxl_config_handler

#endif
