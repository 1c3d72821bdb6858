// The firmware version of the output channels.
#ifndef CONFIG_RECORDS_CHN_FW_VERSION_DATA_H
#define CONFIG_RECORDS_CHN_FW_VERSION_DATA_H

#include <string>

#include "config/records/text_data.h"

namespace hxl_config_handler {

// The item, which is also its shared object.
inline constexpr int CHN_FW_VERSION_ID = 30;

class CConfChnFwVersionData : public CConfTextData {
  public:
    explicit CConfChnFwVersionData(int id, const std::string& text = {})
        : CConfTextData(id, "CConfChnFwVersionData", text) {}
};

}  // namespace hxl_config_handler

#endif
