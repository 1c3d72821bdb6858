// Which object of the shared segment an identifier stands for, and what it holds.
#ifndef SHARED_MEMORY_OBJECT_DIRECTORY_H
#define SHARED_MEMORY_OBJECT_DIRECTORY_H

namespace core_utils {

// The elements of an object's vector.
enum class eElement { DOUBLE, BYTE, TEXT };

// What an element is called in messages and in output.
constexpr const char* nameOf(eElement element) {
    constexpr const char* NAMES[] = {"double", "byte", "text"};
    return NAMES[static_cast<int>(element)];
}

struct sSharedObject {
    int id;
    const char* name;
    eElement element;
};

// Peers look the objects up by these exact names. The identifiers that are missing stay unassigned:
// 6, 23, 26 and 31 are gaps between groups of items, 42 to 46 are the records of the preset
// memories, 47 names nothing. New objects begin at 49.
inline constexpr sSharedObject OBJECT_DIRECTORY[] = {
    {0, "VOLTAGE_DATA_MEM", eElement::DOUBLE}, {1, "CURRENT_DATA_MEM", eElement::DOUBLE},
    {2, "OPP_DATA_MEM", eElement::DOUBLE},     {3, "OVP_DATA_MEM", eElement::DOUBLE},
    {4, "FUSE_DATA_MEM", eElement::DOUBLE},    {5, "RAMP_DATA_MEM", eElement::DOUBLE},
    {7, "CHF_MODE_MEM", eElement::BYTE},       {8, "OPP_STATE_MEM", eElement::BYTE},
    {9, "OVP_STATE_MEM", eElement::BYTE},      {10, "OVP_MODE_MEM", eElement::BYTE},
    {11, "SNS_STATE_MEM", eElement::BYTE},     {12, "LCR_MODE_MEM", eElement::BYTE},
    {13, "FUS_STATE_MEM", eElement::BYTE},     {14, "RMP_STATE_MEM", eElement::BYTE},
    {15, "DVM_STATE_MEM", eElement::BYTE},     {16, "OUTP_MODE_MEM", eElement::BYTE},
    {17, "NETWORK_STATE_MEM", eElement::BYTE}, {18, "BEEPER_STATE_MEM", eElement::BYTE},
    {19, "USB_MODE_MEM", eElement::BYTE},      {20, "DISP_BRIGHT_MEM", eElement::BYTE},
    {21, "KEY_FALL_TIME", eElement::BYTE},  // without "_MEM": peers use it so
    {22, "WLAN_AUTOCONN_MEM", eElement::BYTE}, {24, "WLAN_SSID_MEM", eElement::TEXT},
    {25, "WLAN_PASS_MEM", eElement::TEXT},     {27, "CNF_SRV_FAN_MEM", eElement::DOUBLE},
    {28, "CNF_DRF_COR_MEM", eElement::DOUBLE}, {29, "CNF_CUR_SHR_MEM", eElement::DOUBLE},
    {30, "CNF_CFW_VER_MEM", eElement::TEXT},   {32, "CNF_PM1_DBL_MEM", eElement::DOUBLE},
    {33, "CNF_PM1_SEL_MEM", eElement::BYTE},   {34, "CNF_PM2_DBL_MEM", eElement::DOUBLE},
    {35, "CNF_PM2_SEL_MEM", eElement::BYTE},   {36, "CNF_PM3_DBL_MEM", eElement::DOUBLE},
    {37, "CNF_PM3_SEL_MEM", eElement::BYTE},   {38, "CNF_PM4_DBL_MEM", eElement::DOUBLE},
    {39, "CNF_PM4_SEL_MEM", eElement::BYTE},   {40, "CNF_PM5_DBL_MEM", eElement::DOUBLE},
    {41, "CNF_PM5_SEL_MEM", eElement::BYTE},   {48, "CNF_DEV_TYP_MEM", eElement::TEXT},
};

// The object's row; null if no object has this identifier.
constexpr const sSharedObject* objectOf(int id) {
    for (const sSharedObject& object : OBJECT_DIRECTORY) {
        if (object.id == id) return &object;
    }
    return nullptr;
}

// A loop of its own: under g++'s undefined-behaviour sanitizer the pointer above is no constant.
constexpr bool hasElements(int id, eElement element) {
    for (const sSharedObject& object : OBJECT_DIRECTORY) {
        if (object.id == id) return object.element == element;
    }
    return false;
}

}  // namespace core_utils

#endif
