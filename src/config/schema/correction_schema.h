// correction_current.cfg: the four current-correction factors, which are in no shared object.
#ifndef CONFIG_SCHEMA_CORRECTION_SCHEMA_H
#define CONFIG_SCHEMA_CORRECTION_SCHEMA_H

namespace hxl_config_handler {

inline constexpr char CORRECTION_FILE_NAME[] = "correction_current.cfg";
inline constexpr char CORRECTION_SECTION[] = "CURRENT_CORRECTION";

// Doubles without a unit, in the order in which they are handed over.
inline constexpr const char* CORRECTION_KEYS[] = {"SINK_High_CurrRange", "SINK_Low_CurrRange",
                                                  "SRC_High_CurrRange", "SRC_Low_CurrRange"};

}  // namespace hxl_config_handler

#endif
