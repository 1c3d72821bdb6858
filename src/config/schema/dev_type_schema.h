// devtype_info.cfg: the device string, which tells the instrument's identity.
#ifndef CONFIG_SCHEMA_DEV_TYPE_SCHEMA_H
#define CONFIG_SCHEMA_DEV_TYPE_SCHEMA_H

#include "shared_memory/object_directory.h"

namespace hxl_config_handler {

inline constexpr char DEV_TYPE_FILE_NAME[] = "devtype_info.cfg";
inline constexpr char DEV_TYPE_SECTION[] = "PROCESSED_DEV_INFORMATION";
inline constexpr char DEV_TYPE_KEY[] = "DEV_INFORMATION";

// The item, which is also its shared object.
inline constexpr int DEV_TYPE_ID = 48;
static_assert(core_utils::hasElements(DEV_TYPE_ID, core_utils::eElement::TEXT));

// Device types are numbered from 1: ZEV 35 V, ZEV 100 V, KOL 35 V. 0 stands for one that is not
// known yet.
inline constexpr int DEV_TYPE_COUNT = 3;
constexpr bool isKnownDevType(int devType) {
    return devType >= 1 && devType <= DEV_TYPE_COUNT;
}

// What the device string is before the instrument knows its identity.
inline constexpr char NO_IDENTITY[] = "UNKNOWN";

inline constexpr int ANY_COUNT = 0;
struct sModel {
    int devType;
    int chnCount;
    const char* devString;
};
inline constexpr sModel MODELS[] = {
    {2, 2, "100_VOLTS_DEV_2CH"},
    {1, 2, "35_VOLTS_DEV_2CH"},
    {2, 1, "100_VOLTS_DEV_1CH"},
    {1, 1, "35_VOLTS_DEV_1CH"},
    {3, ANY_COUNT, "KOL_35_VOLTS_DEV_2CH"},
};

}  // namespace hxl_config_handler

#endif
