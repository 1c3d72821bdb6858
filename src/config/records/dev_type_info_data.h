// The device string, which tells model and channel count.
#ifndef CONFIG_RECORDS_DEV_TYPE_INFO_DATA_H
#define CONFIG_RECORDS_DEV_TYPE_INFO_DATA_H

#include <string>

#include "config/records/text_data.h"

namespace hxl_config_handler {

// The item, which is also its shared object.
inline constexpr int DEV_TYPE_ID = 48;

class CConfDevTypeInfoData : public CConfTextData {
  public:
    explicit CConfDevTypeInfoData(int id, const std::string& text = {})
        : CConfTextData(id, "CConfDevTypeInfoData", text) {}
};

}  // namespace hxl_config_handler

#endif
