// Which object of the shared segment an identifier stands for.
#ifndef SHARED_MEMORY_OBJECT_DIRECTORY_H
#define SHARED_MEMORY_OBJECT_DIRECTORY_H

namespace core_utils {

struct sObjectName {
    int id;
    const char* name;
};

// Peers look the objects up by these exact names. Identifiers 6, 23, 26, 31 and 42 to 47 name no
// object and must stay free: the first two are gaps between item groups, the last ones name
// preset records.
inline constexpr sObjectName OBJECT_DIRECTORY[] = {
    {0, "VOLTAGE_DATA_MEM"},   {1, "CURRENT_DATA_MEM"},
    {2, "OPP_DATA_MEM"},       {3, "OVP_DATA_MEM"},
    {4, "FUSE_DATA_MEM"},      {5, "RAMP_DATA_MEM"},
    {7, "CHF_MODE_MEM"},       {8, "OPP_STATE_MEM"},
    {9, "OVP_STATE_MEM"},      {10, "OVP_MODE_MEM"},
    {11, "SNS_STATE_MEM"},     {12, "LCR_MODE_MEM"},
    {13, "FUS_STATE_MEM"},     {14, "RMP_STATE_MEM"},
    {15, "DVM_STATE_MEM"},     {16, "OUTP_MODE_MEM"},
    {17, "NETWORK_STATE_MEM"}, {18, "BEEPER_STATE_MEM"},
    {19, "USB_MODE_MEM"},      {20, "DISP_BRIGHT_MEM"},
    {21, "KEY_FALL_TIME"},  // without "_MEM": peers use it so
    {22, "WLAN_AUTOCONN_MEM"}, {24, "WLAN_SSID_MEM"},
    {25, "WLAN_PASS_MEM"},     {27, "CNF_SRV_FAN_MEM"},
    {28, "CNF_DRF_COR_MEM"},   {29, "CNF_CUR_SHR_MEM"},
    {30, "CNF_CFW_VER_MEM"},   {32, "CNF_PM1_DBL_MEM"},
    {33, "CNF_PM1_SEL_MEM"},   {34, "CNF_PM2_DBL_MEM"},
    {35, "CNF_PM2_SEL_MEM"},   {36, "CNF_PM3_DBL_MEM"},
    {37, "CNF_PM3_SEL_MEM"},   {38, "CNF_PM4_DBL_MEM"},
    {39, "CNF_PM4_SEL_MEM"},   {40, "CNF_PM5_DBL_MEM"},
    {41, "CNF_PM5_SEL_MEM"},   {48, "CNF_DEV_TYP_MEM"},
};

}  // namespace core_utils

#endif
