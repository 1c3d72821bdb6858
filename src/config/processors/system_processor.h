// system_config.cfg: the factory's current-sharing characteristic and channel firmware version.
#ifndef CONFIG_PROCESSORS_SYSTEM_PROCESSOR_H
#define CONFIG_PROCESSORS_SYSTEM_PROCESSOR_H

#include "config/processors/config_processor.h"

namespace hxl_config_handler {

// Reads the file once and publishes its items; never writes it.
class CConfigSystemProcessor : public CAbsConfigProcesor {
  public:
    CConfigSystemProcessor();

    // A key that cannot be read is published as its fallback in the schema.
    int LoadConfigFile() override;
    int LoadDefaults() override { return 0; }
    int Initialise() override;
    CConfData* GetConfData(int id) override { return getRecord(id); }
    CConfData* GetSharedMemData(int id) override;
    int SaveConfData(int, CConfData*) override { return 0; }
    int SetSharedMemData(int, CConfData*) override { return 0; }

  private:
    void loadCurrentSharing();
    void loadChnFwVersion();
};

}  // namespace hxl_config_handler

#endif
