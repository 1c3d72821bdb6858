// dev_var_system_config.cfg: the factory's fan-control service settings and drift correction,
// which differ between the 35 V and the 100 V variant.
#ifndef CONFIG_SCHEMA_DEV_VAR_SCHEMA_H
#define CONFIG_SCHEMA_DEV_VAR_SCHEMA_H

#include <string>

#include "config/schema/number_row.h"
#include "shared_memory/object_directory.h"

namespace hxl_config_handler {

inline constexpr char DEV_VAR_FILE_NAME[] = "dev_var_system_config.cfg";

// The items, which are also their shared objects.
inline constexpr int SERVICE_SETTING_ID = 27;
inline constexpr int DRIFT_CORRECTION_ID = 28;
static_assert(core_utils::hasElements(SERVICE_SETTING_ID, core_utils::eElement::DOUBLE));
static_assert(core_utils::hasElements(DRIFT_CORRECTION_ID, core_utils::eElement::DOUBLE));

inline constexpr char SERVICE_SECTION[] = "SETTING_SERVICE";
inline constexpr sNumberRow SERVICE_ROWS[] = {
    {"OTP", eNumber::FLOAT, 0.0, 0, "degC"},
    {"FanCtrlThreshold_Curr", eNumber::FLOAT, 0.0, 1, "A"},
    {"FanCtrlThreshold_Pwr", eNumber::FLOAT, 0.0, 2, "W"},
    {"ServiceMode_FanCtrlMin", eNumber::FLOAT, 0.0, 3},
    {"ServiceMode_FanCtrlMax", eNumber::FLOAT, 0.0, 4},
    {"ServiceMode_PWMMinPercentage", eNumber::FLOAT, 0.0, 5, "%"},
    {"ServiceMode_PWMMaxPercentage", eNumber::FLOAT, 0.0, 6, "%"},
    {"Non_ServiceMode_FanCtrlMin", eNumber::FLOAT, 0.0, 7},
    {"Non_ServiceMode_FanCtrlMax", eNumber::FLOAT, 0.0, 8},
    {"Non_ServiceMode_PWMMinPercentage", eNumber::FLOAT, 0.0, 9, "%"},
    {"Non_ServiceMode_PWMMaxPercentage", eNumber::FLOAT, 0.0, 10, "%"},
};
static_assert(haveOneIndexEach(SERVICE_ROWS));

// In the order of the file, which is not that of the shared vector: there the divisor follows its
// factor. TO_APPLY is a flag, 0 or 1.
inline constexpr char DRIFT_SECTION[] = "DRIFT_CORRECTION";
inline constexpr sNumberRow DRIFT_ROWS[] = {
    {"TO_APPLY", eNumber::INTEGER, 0.0, 0},
    {"CORRECTION_FACTOR", eNumber::DOUBLE, 0.002, 1},
    {"MAX_TEMP", eNumber::DOUBLE, 35.0, 3, "degC"},
    {"MAX_CURRENT", eNumber::DOUBLE, 3.0, 4, "A"},
    {"MINIMUM_VOLTAGE_ERROR", eNumber::DOUBLE, 0.001, 5, "V"},
    {"MAXIMUM_VOLTAGE_ERROR", eNumber::DOUBLE, 0.03, 6, "V"},
    {"CORRECTION_FACTOR_DIVISOR", eNumber::DOUBLE, 10.0, 2},
    {"SUB_VOLTAGE", eNumber::DOUBLE, 0.1, 7, "V"},
};
static_assert(haveOneIndexEach(DRIFT_ROWS));

// The name of a section in the file, which ends with the variant. A unit that does not know its
// variant reads the bare section.
inline std::string sectionOfVariant(const std::string& section, int devType) {
    switch (devType) {
        case 1:
        case 3:
            return section + "_35V_DEV";
        case 2:
            return section + "_100V_DEV";
        default:
            return section;
    }
}

}  // namespace hxl_config_handler

#endif
