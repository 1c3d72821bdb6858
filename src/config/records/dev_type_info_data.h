// The device string, which tells model and channel count.
#ifndef CONFIG_RECORDS_DEV_TYPE_INFO_DATA_H
#define CONFIG_RECORDS_DEV_TYPE_INFO_DATA_H

#include <string>

#include "config/records/text_data.h"
#include "config/schema/dev_type_schema.h"

namespace hxl_config_handler {

class CConfDevTypeInfoData : public CConfTextData {
  public:
    explicit CConfDevTypeInfoData(int id, const std::string& text = {})
        : CConfTextData(id, "CConfDevTypeInfoData", text) {}
};

}  // namespace hxl_config_handler

#endif
