// How the two channels share the current when they are combined.
#ifndef CONFIG_RECORDS_CURRENT_SHARING_DATA_H
#define CONFIG_RECORDS_CURRENT_SHARING_DATA_H

#include "config/records/numbers_data.h"
#include "config/schema/system_schema.h"

namespace hxl_config_handler {

struct sCurrentSharing {
    double dDominantPart;
    double dSupportingPart;
    double dMidPoint;
    double dConvergePoint;
    double dUpwardGrad_Ch1;
    double dDownwardGrad_Ch2;
};

// The first four numbers come from the file. With fewer, all six are zero.
class CConfCurrentSharingData : public CConfNumbersData<double, 6, 4> {
  public:
    explicit CConfCurrentSharingData(int id)
        : CConfCurrentSharingData(id, {id, "CConfCurrentSharingData"}) {}
    CConfCurrentSharingData(int id, const CConfAutoSaveDataDbl& dblData)
        : CConfNumbersData(id, "CConfCurrentSharingData", dblData) {}

    sCurrentSharing GetCurrentSharing() const {
        const auto numbers = GetNumbers();
        return {numbers[0], numbers[1], numbers[2], numbers[3], numbers[4], numbers[5]};
    }
};

}  // namespace hxl_config_handler

#endif
