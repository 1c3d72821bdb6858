// The drift-correction parameters of one device variant.
#ifndef CONFIG_RECORDS_DRIFT_CORRECTION_DATA_H
#define CONFIG_RECORDS_DRIFT_CORRECTION_DATA_H

#include <iterator>

#include "config/records/numbers_data.h"
#include "config/schema/dev_var_schema.h"

namespace hxl_config_handler {

// The numbers and their units are those of DRIFT_ROWS, in the order of their indexes.
class CConfDriftCorrectionData : public CConfNumbersData<double, std::size(DRIFT_ROWS)> {
  public:
    explicit CConfDriftCorrectionData(int id)
        : CConfDriftCorrectionData(id, {DRIFT_CORRECTION_ID, "DEF"}) {}
    CConfDriftCorrectionData(int id, const CConfAutoSaveDataDbl& dblData)
        : CConfNumbersData(id, "CConfDriftCorrectionData", dblData) {}
};

}  // namespace hxl_config_handler

#endif
