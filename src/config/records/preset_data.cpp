#include "config/records/preset_data.h"

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <vector>

namespace hxl_config_handler {

namespace {

constexpr char CLASS_NAME[] = "CConfPresetData";

template <typename Value, typename T, std::size_t COUNT>
std::vector<Value> toValues(const sPresetBlock& block, const sPresetSetting<T> (&settings)[COUNT]) {
    std::vector<Value> values;
    values.reserve(COUNT * CHANNEL_COUNT);
    for (const auto& setting : settings) {
        for (const T value : block.*setting.values)
            values.push_back(value);
    }
    return values;
}

template <typename Value, typename T, std::size_t COUNT>
void fromValues(sPresetBlock& block, const sPresetSetting<T> (&settings)[COUNT],
                const std::vector<Value>& values) {
    for (std::size_t i = 0; i < values.size(); ++i)
        setElement(block, settings, i, values[i]);
}

template <typename T, std::size_t COUNT>
bool areEqual(const sPresetBlock& a, const sPresetBlock& b,
              const sPresetSetting<T> (&settings)[COUNT]) {
    return std::all_of(std::begin(settings), std::end(settings), [&](const auto& setting) {
        const auto& values = a.*setting.values;
        return std::equal(std::begin(values), std::end(values), b.*setting.values);
    });
}

}  // namespace

bool operator==(const sPresetBlock& a, const sPresetBlock& b) {
    return areEqual(a, b, PRESET_NUMBERS) && areEqual(a, b, PRESET_STATES);
}

CConfPresetData::CConfPresetData(int id, const std::string& name)
    : CConfData(id, name), mDblData(id, CLASS_NAME), mSelData(id, CLASS_NAME) {
    SetPresetBlock({});
}

CConfPresetData::CConfPresetData(int id, const sPresetBlock& block)
    : CConfData(id, CLASS_NAME), mDblData(id, CLASS_NAME), mSelData(id, CLASS_NAME) {
    SetPresetBlock(block);
}

CConfPresetData::CConfPresetData(int id, const CConfAutoSaveDataDbl& dblData,
                                 const CConfAutoSaveDataSel& selData)
    : CConfData(id, CLASS_NAME), mDblData(id, CLASS_NAME), mSelData(id, CLASS_NAME) {
    mDblData.SetValues(dblData.GetValues());
    mSelData.SetValues(selData.GetValues());
    fromValues(mBlock, PRESET_NUMBERS, mDblData.GetValues());
    fromValues(mBlock, PRESET_STATES, mSelData.GetValues());
}

void CConfPresetData::SetPresetBlock(const sPresetBlock& block) {
    mBlock = block;
    mDblData.SetValues(toValues<double>(block, PRESET_NUMBERS));
    mSelData.SetValues(toValues<unsigned char>(block, PRESET_STATES));
}

}  // namespace hxl_config_handler
