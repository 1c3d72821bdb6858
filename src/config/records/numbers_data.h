// What the records that name the numbers of a doubles record have in common.
#ifndef CONFIG_RECORDS_NUMBERS_DATA_H
#define CONFIG_RECORDS_NUMBERS_DATA_H

#include <algorithm>
#include <array>
#include <cstddef>
#include <string>
#include <vector>

#include "config/records/auto_save_data.h"

namespace hxl_config_handler {

// Owns a doubles record, which is what goes to shared memory, and gives its first COUNT values as
// numbers. They are all zero when it holds fewer than NEEDED; that is not reported.
template <typename Number, std::size_t COUNT, std::size_t NEEDED = COUNT>
class CConfNumbersData : public CConfData {
  public:
    const CConfAutoSaveDataDbl& GetDblData() const { return mDblData; }

    std::array<Number, COUNT> GetNumbers() const {
        std::array<Number, COUNT> numbers{};
        const std::vector<double>& values = mDblData.GetValues();
        if (values.size() < NEEDED) return numbers;
        const std::size_t given = std::min(COUNT, values.size());
        std::transform(values.begin(), values.begin() + static_cast<std::ptrdiff_t>(given),
                       numbers.begin(), [](double value) { return static_cast<Number>(value); });
        return numbers;
    }

    // Replaces the values of the doubles record.
    void SetValues(const std::vector<double>& values) { mDblData.SetValues(values); }

  protected:
    CConfNumbersData(int id, const std::string& key, const CConfAutoSaveDataDbl& dblData)
        : CConfData(id, key), mDblData(dblData) {}

  private:
    CConfAutoSaveDataDbl mDblData;
};

}  // namespace hxl_config_handler

#endif
