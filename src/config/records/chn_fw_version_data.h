// The firmware version of the output channels.
#ifndef CONFIG_RECORDS_CHN_FW_VERSION_DATA_H
#define CONFIG_RECORDS_CHN_FW_VERSION_DATA_H

#include <string>

#include "config/records/text_data.h"
#include "config/schema/system_schema.h"

namespace hxl_config_handler {

class CConfChnFwVersionData : public CConfTextData {
  public:
    explicit CConfChnFwVersionData(int id, const std::string& text = {})
        : CConfTextData(id, "CConfChnFwVersionData", text) {}
};

}  // namespace hxl_config_handler

#endif
