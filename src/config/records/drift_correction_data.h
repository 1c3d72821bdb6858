// The drift-correction parameters of one device variant.
#ifndef CONFIG_RECORDS_DRIFT_CORRECTION_DATA_H
#define CONFIG_RECORDS_DRIFT_CORRECTION_DATA_H

#include "config/records/numbers_data.h"

namespace hxl_config_handler {

// The item, which is also its shared object.
inline constexpr int DRIFT_CORRECTION_ID = 28;

// Eight numbers: the flag to apply the correction, its factor and the factor's divisor, maximum
// temperature (degrees Celsius) and current (A), minimum and maximum voltage error and the
// subtracted voltage (V).
class CConfDriftCorrectionData : public CConfNumbersData<double, 8> {
  public:
    explicit CConfDriftCorrectionData(int id)
        : CConfDriftCorrectionData(id, {DRIFT_CORRECTION_ID, "DEF"}) {}
    CConfDriftCorrectionData(int id, const CConfAutoSaveDataDbl& dblData)
        : CConfNumbersData(id, "CConfDriftCorrectionData", dblData) {}
};

}  // namespace hxl_config_handler

#endif
