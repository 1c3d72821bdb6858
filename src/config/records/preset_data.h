// One preset memory: all output settings of both channels.
#ifndef CONFIG_RECORDS_PRESET_DATA_H
#define CONFIG_RECORDS_PRESET_DATA_H

#include <string>

#include "config/records/auto_save_data.h"

namespace hxl_config_handler {

// Element 0 of each setting is channel 1. Volts, amperes, watts; states are 0 or 1.
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

template <typename T>
struct sPresetSetting {
    const char* key;  // in the preset file
    T (sPresetBlock::*values)[2];
};

// The settings in block order, which is their order in the two shared objects of a preset too.
inline constexpr sPresetSetting<float> PRESET_NUMBERS[] = {
    {"VoltageSet", &sPresetBlock::fVoltageSet},
    {"CurrentSet", &sPresetBlock::fCurrentSet},
    {"OvpVoltSet", &sPresetBlock::fOvpVoltSet},
    {"OppPwrSet", &sPresetBlock::fOppPwrSet},
    {"EasyRampTime", &sPresetBlock::fEasyRampTime},
    {"FuseDelay", &sPresetBlock::fFuseDelay},
    {"ChFusionVoltageSet", &sPresetBlock::fChFusionVoltageSet},
    {"ChFusionCurrentSet", &sPresetBlock::fChFusionCurrentSet},
};
inline constexpr sPresetSetting<unsigned char> PRESET_STATES[] = {
    {"FuseState", &sPresetBlock::ucFuseState},
    {"FuseLinkSet", &sPresetBlock::ucFuseLinkSet},
    {"SrcPwrProtState", &sPresetBlock::ucSrcPwrProtState},
    {"SrcVolProtState", &sPresetBlock::ucSrcVolProtState},
    {"OvpMode", &sPresetBlock::ucOvpMode},
    {"EasyRampState", &sPresetBlock::ucEasyRampState},
    {"RemoteSense", &sPresetBlock::ucRemoteSense},
    {"CurrRange", &sPresetBlock::ucCurrRange},
    {"ChnConnMode", &sPresetBlock::ucChnConnMode},
};

// Owns a doubles and a bytes record with copies of the values it was made from; they are what
// goes to shared memory. Values that they lack are zero in the block.
class CConfPresetData : public CConfData {
  public:
    // An empty preset under a name of its own as key; the other two have the class name as key.
    CConfPresetData(int id, const std::string& name);
    CConfPresetData(int id, const sPresetBlock& block);
    CConfPresetData(int id, const CConfAutoSaveDataDbl& dblData,
                    const CConfAutoSaveDataSel& selData);

    sPresetBlock GetPresetBlock() const;
    void SetPresetBlock(const sPresetBlock& block);

    const CConfAutoSaveDataDbl& GetDblData() const { return mDblData; }
    const CConfAutoSaveDataSel& GetSelData() const { return mSelData; }

  private:
    CConfAutoSaveDataDbl mDblData;
    CConfAutoSaveDataSel mSelData;
};

}  // namespace hxl_config_handler

#endif
