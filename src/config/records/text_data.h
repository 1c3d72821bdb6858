// What the records that hold one text have in common.
#ifndef CONFIG_RECORDS_TEXT_DATA_H
#define CONFIG_RECORDS_TEXT_DATA_H

#include <string>
#include <utility>

#include "config/records/conf_data.h"

namespace hxl_config_handler {

class CConfTextData : public CConfData {
  public:
    std::string GetText() const { return mstrText; }
    void SetText(const std::string& text) { mstrText = text; }

  protected:
    CConfTextData(int id, const char* key, std::string text)
        : CConfData(id, key), mstrText(std::move(text)) {}

  private:
    std::string mstrText;
};

}  // namespace hxl_config_handler

#endif
