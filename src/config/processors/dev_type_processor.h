// devtype_info.cfg: the device string that tells the instrument's identity.
#ifndef CONFIG_PROCESSORS_DEV_TYPE_PROCESSOR_H
#define CONFIG_PROCESSORS_DEV_TYPE_PROCESSOR_H

#include "config/processors/config_processor.h"

namespace hxl_config_handler {

// Stores the string as it is given. Prints every step of a save; these lines are an interface.
class CConfigDevTypeProcessor : public CAbsConfigProcesor {
  public:
    CConfigDevTypeProcessor();

    // Publishes the stored string; without one nothing is published and the result is 0.
    int LoadConfigFile() override;
    int LoadDefaults() override { return 0; }
    int Initialise() override;
    CConfData* GetConfData(int id) override { return getRecord(id); }
    CConfData* GetSharedMemData(int id) override;
    int SaveConfData(int id, CConfData* record) override;
    int SetSharedMemData(int id, CConfData* record) override;

  private:
    bool writeDevInfo(const std::string& value);
};

}  // namespace hxl_config_handler

#endif
