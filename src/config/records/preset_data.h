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
    T defaults[3];  // from the factory, for device types 1, 2 and 3, the same for both channels
};

// The settings in block order, which is their order in the two shared objects of a preset too.
inline constexpr sPresetSetting<float> PRESET_NUMBERS[] = {
    {"VoltageSet", &sPresetBlock::fVoltageSet, {6.0F, 20.0F, 6.0F}},
    {"CurrentSet", &sPresetBlock::fCurrentSet, {6.05F, 2.03F, 5.1F}},
    {"OvpVoltSet", &sPresetBlock::fOvpVoltSet, {36.5F, 102.0F, 36.0F}},
    {"OppPwrSet", &sPresetBlock::fOppPwrSet, {41.0F, 41.0F, 62.0F}},
    {"EasyRampTime", &sPresetBlock::fEasyRampTime, {10.0F, 10.0F, 10.0F}},
    {"FuseDelay", &sPresetBlock::fFuseDelay, {0.0F, 0.0F, 0.0F}},
    {"ChFusionVoltageSet", &sPresetBlock::fChFusionVoltageSet, {6.0F, 20.0F, 6.0F}},
    // Type 3 has the limit of type 1 here.
    {"ChFusionCurrentSet", &sPresetBlock::fChFusionCurrentSet, {6.05F, 2.03F, 6.05F}},
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

// True if no setting differs: -0.0 equals 0.0, and a number that is none equals nothing.
bool operator==(const sPresetBlock& a, const sPresetBlock& b);

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
