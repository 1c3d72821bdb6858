// conf_auto_save.cfg: the live settings that the instrument comes back with after a power cycle.
#ifndef CONFIG_SCHEMA_AUTO_SAVE_SCHEMA_H
#define CONFIG_SCHEMA_AUTO_SAVE_SCHEMA_H

#include <cstdint>
#include <string>

#include "config/schema/dev_type_schema.h"
#include "shared_memory/object_directory.h"

namespace hxl_config_handler {

inline constexpr char AUTO_SAVE_FILE_NAME[] = "conf_auto_save.cfg";

// Whether the file holds saved values: 0 for a fresh one. The low byte counts.
inline constexpr char STATUS_SECTION[] = "CONF_STATUS";
inline constexpr char STATE_KEY[] = "STATE";
inline constexpr char STATE_SAVED[] = "1";

template <typename Default>
struct sAutoSaveItem {
    int id;  // also of its shared object
    const char* key;
    Default defaults[DEV_TYPE_COUNT];  // from the factory, the one value that a seeded item has
    const char* unit = "";
};

inline constexpr sAutoSaveItem<double> NUMBER_ITEMS[] = {
    {0, "VOL_LVL", {6.0, 20.0, 6.0}, "V"},   {1, "CUR_LVL", {6.1, 2.03, 5.1}, "A"},
    {2, "OPP_LVL", {41.0, 41.0, 41.0}, "W"}, {3, "OVP_LVL", {36.5, 102.0, 36.0}, "V"},
    {4, "FUS_DLY", {0.0, 0.0, 0.0}},         {5, "RMP_TME", {10.0, 10.0, 10.0}},
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

// The items whose values are of type T: double, unsigned char or std::string.
template <typename T>
struct sAutoSaveGroup;

template <>
struct sAutoSaveGroup<double> {
    static constexpr auto& SECTION = "CONF_ITEM_DBL";
    static constexpr auto& ITEMS = NUMBER_ITEMS;
    static constexpr auto ELEMENT = core_utils::eElement::DOUBLE;
};
template <>
struct sAutoSaveGroup<unsigned char> {
    static constexpr auto& SECTION = "CONF_ITEM_SEL";
    static constexpr auto& ITEMS = BYTE_ITEMS;
    static constexpr auto ELEMENT = core_utils::eElement::BYTE;
};
template <>
struct sAutoSaveGroup<std::string> {
    static constexpr auto& SECTION = "CONF_ITEM_STR";
    static constexpr auto& ITEMS = TEXT_ITEMS;
    static constexpr auto ELEMENT = core_utils::eElement::TEXT;
};

// The identifiers of a group as a bit set, as every poll of an item asks for its type.
template <typename T>
constexpr std::uint64_t idsOf() {
    std::uint64_t ids = 0;
    for (const auto& item : sAutoSaveGroup<T>::ITEMS)
        ids |= std::uint64_t{1} << item.id;
    return ids;
}
template <typename T>
constexpr bool isItemOf(int id) {
    constexpr std::uint64_t IDS = idsOf<T>();  // does not compile for an identifier beyond it
    return id >= 0 && id < 64 && (IDS >> id & 1) != 0;
}

template <typename T>
constexpr bool haveObjects() {
    for (const auto& item : sAutoSaveGroup<T>::ITEMS) {
        if (!core_utils::hasElements(item.id, sAutoSaveGroup<T>::ELEMENT)) return false;
    }
    return true;
}
static_assert(haveObjects<double>() && haveObjects<unsigned char>() && haveObjects<std::string>());

// Calls `operation` once for each group, in the order of the file, with a value of its type.
template <typename Operation>
void forEachGroup(Operation operation) {
    operation(double());
    operation(static_cast<unsigned char>(0));
    operation(std::string());
}

// The unit of all values of a shared object; empty if it has none or several.
constexpr const char* unitOf(int objectId) {
    for (const auto& item : NUMBER_ITEMS) {
        if (item.id == objectId) return item.unit;
    }
    return "";
}

}  // namespace hxl_config_handler

#endif
