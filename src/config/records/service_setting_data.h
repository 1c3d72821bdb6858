// The fan-control service settings of one device variant.
#ifndef CONFIG_RECORDS_SERVICE_SETTING_DATA_H
#define CONFIG_RECORDS_SERVICE_SETTING_DATA_H

#include "config/records/numbers_data.h"

namespace hxl_config_handler {

// The item, which is also its shared object.
inline constexpr int SERVICE_SETTING_ID = 27;

// Eleven single-precision numbers: over-temperature threshold, fan thresholds of current and
// power, then minimum and maximum of fan control and of PWM duty (percent), first in service mode
// and then in normal operation.
class CConfServiceSetingData : public CConfNumbersData<float, 11> {
  public:
    // The two keys differ: the key shows which constructor made the record.
    explicit CConfServiceSetingData(int id)
        : CConfNumbersData(id, "CConfServiceSetingData", {SERVICE_SETTING_ID, "DEF"}) {}
    CConfServiceSetingData(int id, const CConfAutoSaveDataDbl& dblData)
        : CConfNumbersData(id, "CServiceSetingData", dblData) {}
};

}  // namespace hxl_config_handler

#endif
