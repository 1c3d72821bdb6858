// The items of conf_auto_save.cfg: what the processor keeps and the handler polls.
#ifndef CONFIG_PROCESSORS_AUTO_SAVE_ITEMS_H
#define CONFIG_PROCESSORS_AUTO_SAVE_ITEMS_H

#include <cstddef>

#include "shared_memory/object_directory.h"

namespace hxl_config_handler {

inline constexpr char AUTO_SAVE_FILE_NAME[] = "conf_auto_save.cfg";
inline constexpr char STATUS_SECTION[] = "CONF_STATUS";
inline constexpr char STATE_KEY[] = "STATE";
inline constexpr char NUMBERS_SECTION[] = "CONF_ITEM_DBL";
inline constexpr char BYTES_SECTION[] = "CONF_ITEM_SEL";
inline constexpr char TEXTS_SECTION[] = "CONF_ITEM_STR";

template <typename Default>
struct sAutoSaveItem {
    int id;  // also of its shared object
    const char* key;
    Default defaults[3];  // from the factory, for device types 1, 2 and 3
};

inline constexpr sAutoSaveItem<double> NUMBER_ITEMS[] = {
    {0, "VOL_LVL", {6.0, 20.0, 6.0}},   {1, "CUR_LVL", {6.1, 2.03, 5.1}},
    {2, "OPP_LVL", {41.0, 41.0, 41.0}}, {3, "OVP_LVL", {36.5, 102.0, 36.0}},
    {4, "FUS_DLY", {0.0, 0.0, 0.0}},    {5, "RMP_TME", {10.0, 10.0, 10.0}},
};
inline constexpr sAutoSaveItem<unsigned char> BYTE_ITEMS[] = {
    {7, "CHF_MOD", {0, 0, 2}},  {8, "OPP_STE", {1, 1, 1}},  {9, "OVP_STE", {1, 1, 1}},
    {10, "OVP_MOD", {1, 1, 1}}, {11, "SNS_STE", {0, 0, 0}}, {12, "LCR_MOD", {0, 0, 0}},
    {13, "FUS_STE", {0, 0, 0}}, {14, "RMP_STE", {0, 0, 0}}, {15, "DVM_STE", {0, 0, 0}},
    {16, "OUT_MOD", {0, 0, 0}}, {17, "NET_STE", {0, 0, 0}}, {18, "BPR_STE", {1, 1, 1}},
    {19, "USB_MOD", {0, 0, 0}}, {20, "DSP_BRT", {5, 5, 5}}, {21, "KEY_STE", {0, 0, 0}},
    {22, "WLAN_AC", {0, 0, 0}},
};
inline constexpr sAutoSaveItem<const char*> TEXT_ITEMS[] = {
    {24, "WLAN_SSID", {"SSID", "SSID", "SSID"}},
    {25, "WLAN_PASS", {"Tarnwell", "Tarnwell", "Tarnwell"}},
};

template <typename Default, std::size_t COUNT>
constexpr bool haveObjectsOf(core_utils::eElement element,
                             const sAutoSaveItem<Default> (&items)[COUNT]) {
    for (const auto& item : items) {
        bool found = false;
        for (const auto& object : core_utils::OBJECT_DIRECTORY)
            found = found || (object.id == item.id && object.element == element);
        if (!found) return false;
    }
    return true;
}
static_assert(haveObjectsOf(core_utils::eElement::DOUBLE, NUMBER_ITEMS));
static_assert(haveObjectsOf(core_utils::eElement::BYTE, BYTE_ITEMS));
static_assert(haveObjectsOf(core_utils::eElement::TEXT, TEXT_ITEMS));

}  // namespace hxl_config_handler

#endif
