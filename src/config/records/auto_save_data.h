// The three records that hold a sequence of values, as the auto-save file keeps them.
#ifndef CONFIG_RECORDS_AUTO_SAVE_DATA_H
#define CONFIG_RECORDS_AUTO_SAVE_DATA_H

#include <string>
#include <utility>
#include <vector>

#include "config/records/conf_data.h"

namespace hxl_config_handler {

// T is double, unsigned char or std::string; the sequence may have any length.
template <typename T>
class CConfAutoSaveData : public CConfData {
  public:
    CConfAutoSaveData(int id, const std::string& key) : CConfData(id, key) {}
    explicit CConfAutoSaveData(int id) : CConfData(id, "DEF") {}
    CConfAutoSaveData(int id, std::vector<T> values)
        : CConfData(id, "DEF"), mValues(std::move(values)) {}

    // A record that is about to go gives its values away.
    const std::vector<T>& GetValues() const& { return mValues; }
    std::vector<T> GetValues() && { return std::move(mValues); }
    void SetValues(const std::vector<T>& values) { mValues = values; }

    // Bytes are equal when the sequences are. Doubles and texts compare the other record's values
    // with this record's first ones only, so that a prefix is equal; callers compare records of
    // one item, whose lengths agree.
    bool IsEqual(const CConfAutoSaveData& other) const;

    void PrintConfData() const override;

  private:
    std::vector<T> mValues;
};

// Prints each value to standard output, followed by a blank.
template <typename T>
void PrintValues(const std::vector<T>& values);

using CConfAutoSaveDataDbl = CConfAutoSaveData<double>;
using CConfAutoSaveDataSel = CConfAutoSaveData<unsigned char>;
using CConfAutoSaveDataStr = CConfAutoSaveData<std::string>;

}  // namespace hxl_config_handler

#endif
