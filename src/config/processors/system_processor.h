// system_config.cfg: the factory's current-sharing characteristic and channel firmware version.
#ifndef CONFIG_PROCESSORS_SYSTEM_PROCESSOR_H
#define CONFIG_PROCESSORS_SYSTEM_PROCESSOR_H

#include "config/processors/config_processor.h"

namespace hxl_config_handler {

inline constexpr char SYSTEM_FILE_NAME[] = "system_config.cfg";
inline constexpr char SHARING_SECTION[] = "CURRENT_SHARING_W1";
inline constexpr const char* SHARING_KEYS[] = {"DOMINANT_PART", "SUPPORTING_PART", "MID_POINT",
                                               "CONVERGE_POINT"};
inline constexpr double SHARING_DEFAULT = 0.0;
inline constexpr char VERSION_SECTION[] = "FW_VERSION";
inline constexpr char VERSION_KEY[] = "Value";
inline constexpr char VERSION_DEFAULT[] = "VERSION";
// The manager's.
inline constexpr char SYNC_SECTION[] = "SETTING_SYNC";
inline constexpr char SYNC_KEY[] = "SYNC";

// Reads the file once and publishes its items; never writes it.
class CConfigSystemProcessor : public CAbsConfigProcesor {
  public:
    CConfigSystemProcessor();

    // A key that cannot be read publishes 0.0, or "VERSION" for the firmware version.
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
