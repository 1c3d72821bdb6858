// The fan-control service settings of one device variant.
#ifndef CONFIG_RECORDS_SERVICE_SETTING_DATA_H
#define CONFIG_RECORDS_SERVICE_SETTING_DATA_H

#include <iterator>

#include "config/records/numbers_data.h"
#include "config/schema/dev_var_schema.h"

namespace hxl_config_handler {

// The numbers and their units are those of SERVICE_ROWS.
class CConfServiceSetingData : public CConfNumbersData<float, std::size(SERVICE_ROWS)> {
  public:
    // The two keys differ: the key shows which constructor made the record.
    explicit CConfServiceSetingData(int id)
        : CConfNumbersData(id, "CConfServiceSetingData", {SERVICE_SETTING_ID, "DEF"}) {}
    CConfServiceSetingData(int id, const CConfAutoSaveDataDbl& dblData)
        : CConfNumbersData(id, "CServiceSetingData", dblData) {}
};

}  // namespace hxl_config_handler

#endif
