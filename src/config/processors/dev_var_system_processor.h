// dev_var_system_config.cfg: the factory's fan-control service settings and drift correction,
// which differ between the 35 V and the 100 V variant.
#ifndef CONFIG_PROCESSORS_DEV_VAR_SYSTEM_PROCESSOR_H
#define CONFIG_PROCESSORS_DEV_VAR_SYSTEM_PROCESSOR_H

#include <cstddef>
#include <string>

#include "config/processors/config_processor.h"

namespace hxl_config_handler {

inline constexpr char DEV_VAR_FILE_NAME[] = "dev_var_system_config.cfg";
inline constexpr char SERVICE_SECTION[] = "SETTING_SERVICE";
inline constexpr char DRIFT_SECTION[] = "DRIFT_CORRECTION";
inline constexpr float SERVICE_DEFAULT = 0.0F;
inline constexpr char TO_APPLY_KEY[] = "TO_APPLY";
inline constexpr int TO_APPLY_DEFAULT = 0;

inline constexpr const char* SERVICE_KEYS[] = {
    "OTP",
    "FanCtrlThreshold_Curr",
    "FanCtrlThreshold_Pwr",
    "ServiceMode_FanCtrlMin",
    "ServiceMode_FanCtrlMax",
    "ServiceMode_PWMMinPercentage",
    "ServiceMode_PWMMaxPercentage",
    "Non_ServiceMode_FanCtrlMin",
    "Non_ServiceMode_FanCtrlMax",
    "Non_ServiceMode_PWMMinPercentage",
    "Non_ServiceMode_PWMMaxPercentage",
};

// In the order of the file, which is not that of the record: the divisor moves up.
struct sDriftKey {
    const char* key;
    double defaultValue;
    std::size_t recordIndex;
};
inline constexpr sDriftKey DRIFT_KEYS[] = {
    {"CORRECTION_FACTOR", 0.002, 1},
    {"MAX_TEMP", 35.0, 3},
    {"MAX_CURRENT", 3.0, 4},
    {"MINIMUM_VOLTAGE_ERROR", 0.001, 5},
    {"MAXIMUM_VOLTAGE_ERROR", 0.03, 6},
    {"CORRECTION_FACTOR_DIVISOR", 10.0, 2},
    {"SUB_VOLTAGE", 0.1, 7},
};

// The name of a section in the file, which ends with the variant.
std::string sectionOfVariant(const std::string& section, int devType);

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
    void loadServiceSettings();
    void loadDriftCorrection();
};

}  // namespace hxl_config_handler

#endif
