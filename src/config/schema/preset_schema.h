// conf_preset.cfg: the five preset memories, each with all output settings of both channels.
#ifndef CONFIG_SCHEMA_PRESET_SCHEMA_H
#define CONFIG_SCHEMA_PRESET_SCHEMA_H

#include <cstddef>
#include <iterator>
#include <string>

#include "config/schema/dev_type_schema.h"
#include "shared_memory/object_directory.h"

namespace hxl_config_handler {

inline constexpr char PRESET_FILE_NAME[] = "conf_preset.cfg";

// Element 0 of each setting is channel 1. The rows below have keys and units; states are 0 or 1.
struct sPresetBlock {
    float fVoltageSet[2];
    float fCurrentSet[2];
    float fOvpVoltSet[2];
    float fOppPwrSet[2];
    float fEasyRampTime[2];
    float fFuseDelay[2];
    float fChFusionVoltageSet[2];
    float fChFusionCurrentSet[2];
    unsigned char ucFuseState[2];
    unsigned char ucFuseLinkSet[2];
    unsigned char ucSrcPwrProtState[2];
    unsigned char ucSrcVolProtState[2];
    unsigned char ucOvpMode[2];
    unsigned char ucEasyRampState[2];
    unsigned char ucRemoteSense[2];
    unsigned char ucCurrRange[2];
    unsigned char ucChnConnMode[2];
};

inline constexpr std::size_t CHANNEL_COUNT = 2;

template <typename T>
struct sPresetSetting {
    const char* key;
    T (sPresetBlock::*values)[CHANNEL_COUNT];
    T defaults[DEV_TYPE_COUNT];  // from the factory, the same for both channels
    const char* unit = "";
};

// The settings in block order, which is their order in the two shared objects of a preset too.
inline constexpr sPresetSetting<float> PRESET_NUMBERS[] = {
    {"VoltageSet", &sPresetBlock::fVoltageSet, {6.0F, 20.0F, 6.0F}, "V"},
    {"CurrentSet", &sPresetBlock::fCurrentSet, {6.05F, 2.03F, 5.1F}, "A"},
    {"OvpVoltSet", &sPresetBlock::fOvpVoltSet, {36.5F, 102.0F, 36.0F}, "V"},
    {"OppPwrSet", &sPresetBlock::fOppPwrSet, {41.0F, 41.0F, 62.0F}, "W"},
    {"EasyRampTime", &sPresetBlock::fEasyRampTime, {10.0F, 10.0F, 10.0F}},
    {"FuseDelay", &sPresetBlock::fFuseDelay, {0.0F, 0.0F, 0.0F}},
    {"ChFusionVoltageSet", &sPresetBlock::fChFusionVoltageSet, {6.0F, 20.0F, 6.0F}, "V"},
    // Type 3 has the limit of type 1 here.
    {"ChFusionCurrentSet", &sPresetBlock::fChFusionCurrentSet, {6.05F, 2.03F, 6.05F}, "A"},
};
inline constexpr sPresetSetting<unsigned char> PRESET_STATES[] = {
    {"FuseState", &sPresetBlock::ucFuseState, {0, 0, 0}},
    {"FuseLinkSet", &sPresetBlock::ucFuseLinkSet, {0, 0, 0}},
    {"SrcPwrProtState", &sPresetBlock::ucSrcPwrProtState, {1, 1, 1}},
    {"SrcVolProtState", &sPresetBlock::ucSrcVolProtState, {1, 1, 1}},
    {"OvpMode", &sPresetBlock::ucOvpMode, {1, 1, 1}},
    {"EasyRampState", &sPresetBlock::ucEasyRampState, {0, 0, 0}},
    {"RemoteSense", &sPresetBlock::ucRemoteSense, {0, 0, 0}},
    {"CurrRange", &sPresetBlock::ucCurrRange, {0, 0, 0}},
    {"ChnConnMode", &sPresetBlock::ucChnConnMode, {0, 0, 0}},
};

// Puts one element of a preset's shared object, which may have too many, into its block.
template <typename T, std::size_t COUNT, typename Element>
void setElement(sPresetBlock& block, const sPresetSetting<T> (&settings)[COUNT], std::size_t index,
                Element element) {
    if (index >= COUNT * CHANNEL_COUNT) return;
    const auto& setting = settings[index / CHANNEL_COUNT];
    (block.*setting.values)[index % CHANNEL_COUNT] = static_cast<T>(element);
}

struct sPresetMemory {
    int recordId;
    const char* name;
    int number;
    int numericObject;
    int stateObject;
};
inline constexpr sPresetMemory PRESET_MEMORIES[] = {
    {42, "PM1_DBL", 1, 32, 33}, {43, "PM2_DBL", 2, 34, 35}, {44, "PM3_DBL", 3, 36, 37},
    {45, "PM4_DBL", 4, 38, 39}, {46, "PM5_DBL", 5, 40, 41},
};
constexpr bool haveObjects(const sPresetMemory& memory) {
    using core_utils::eElement;
    return core_utils::hasElements(memory.numericObject, eElement::DOUBLE) &&
           core_utils::hasElements(memory.stateObject, eElement::BYTE) &&
           core_utils::objectOf(memory.recordId) == nullptr;
}
static_assert(haveObjects(PRESET_MEMORIES[0]) && haveObjects(PRESET_MEMORIES[1]) &&
              haveObjects(PRESET_MEMORIES[2]) && haveObjects(PRESET_MEMORIES[3]) &&
              haveObjects(PRESET_MEMORIES[4]) && std::size(PRESET_MEMORIES) == 5);

// The section of a preset memory; an unknown device type has that of types 1 and 3.
inline std::string presetSection(int presetNo, int devType) {
    const char* variant = devType == 2 ? "100_VOLTS_DEV" : "35_VOLTS_DEV";
    return "INSTRUMENT_SETTING_" + std::to_string(presetNo) + "_" + variant;
}

}  // namespace hxl_config_handler

#endif
