// system_config.cfg: the factory's current-sharing characteristic, the channels' firmware version
// and a synchronisation mark.
#ifndef CONFIG_SCHEMA_SYSTEM_SCHEMA_H
#define CONFIG_SCHEMA_SYSTEM_SCHEMA_H

#include "config/schema/number_row.h"
#include "shared_memory/object_directory.h"

namespace hxl_config_handler {

inline constexpr char SYSTEM_FILE_NAME[] = "system_config.cfg";

// The items, which are also their shared objects.
inline constexpr int CURRENT_SHARING_ID = 29;
inline constexpr int CHN_FW_VERSION_ID = 30;
static_assert(core_utils::hasElements(CURRENT_SHARING_ID, core_utils::eElement::DOUBLE));
static_assert(core_utils::hasElements(CHN_FW_VERSION_ID, core_utils::eElement::TEXT));

// Units and meaning belong to the process that applies them.
inline constexpr char SHARING_SECTION[] = "CURRENT_SHARING_W1";
inline constexpr sNumberRow SHARING_ROWS[] = {
    {"DOMINANT_PART", eNumber::DOUBLE, 0.0, 0},
    {"SUPPORTING_PART", eNumber::DOUBLE, 0.0, 1},
    {"MID_POINT", eNumber::DOUBLE, 0.0, 2},
    {"CONVERGE_POINT", eNumber::DOUBLE, 0.0, 3},
};
static_assert(haveOneIndexEach(SHARING_ROWS));

inline constexpr char VERSION_SECTION[] = "FW_VERSION";
inline constexpr char VERSION_KEY[] = "Value";
inline constexpr char VERSION_FALLBACK[] = "VERSION";  // if the key cannot be read

// An integer that is in no shared object.
inline constexpr char SYNC_SECTION[] = "SETTING_SYNC";
inline constexpr char SYNC_KEY[] = "SYNC";

}  // namespace hxl_config_handler

#endif
